#pragma once
// A whole program on the fake platform, with dialogs that answer from a
// script of the test and never block, and an exit that is only counted.

#include <QAction>
#include <QFile>
#include <QProcess>
#include <QPushButton>
#include <QStringList>
#include <QTemporaryDir>
#include <deque>
#include <functional>
#include <memory>
#include <unistd.h>

#include "app/advancedwindow.h"
#include "app/app.h"
#include "app/basicwindow.h"
#include "platform/fake/fakeplatform.h"

namespace tarvoke::app::testing {

// The front of answers, or otherwise when the test gave none.
template <typename T>
T next(std::deque<T>& answers, T otherwise) {
    if (answers.empty()) return otherwise;
    T answer = answers.front();
    answers.pop_front();
    return answer;
}

class FakeDialogs : public Dialogs {
public:
    QStringList told;  // "title: text" of each box
    Icon lastIcon = Icon::None;
    std::vector<QString> asked;
    std::deque<bool> answers;                // Yes / No, in order; Yes when empty
    std::deque<Answer> threeWay;             // Yes / No / Cancel; from answers when empty
    std::deque<SaveChoice> saveChoices;      // Cancel when empty
    std::deque<QString> paths;               // what the file dialogs return; "" (Cancel) when empty
    std::deque<std::optional<int>> numbers;  // what number questions return; Cancel when empty
    QStringList opened;

    void tell(const QString& title, const QString& text, Icon icon) override {
        told << title + ": " + text;
        lastIcon = icon;
    }
    bool askYesNo(const QString&, const QString& text) override { return asked.push_back(text), next(answers, true); }
    Answer askYesNoCancel(const QString& title, const QString& text) override {
        if (threeWay.empty()) return Dialogs::askYesNoCancel(title, text);
        return asked.push_back(text), next(threeWay, Answer::Yes);
    }
    SaveChoice askSave(const QString&, const QString& text) override {
        return asked.push_back(text), next(saveChoices, SaveChoice::Cancel);
    }
    QString openFileName(const QString&, const QString&, const QString&) override { return next(paths, QString()); }
    QString saveFileName(const QString&, const QString&, const QString&) override { return next(paths, QString()); }
    void openDocument(const QString& path) override { opened << path; }
    std::optional<int> askNumber(const QString&, const QString&, int, int, int) override { return next(numbers, {}); }
};

// Key state the test sets by hand.
class FakeKeys : public platform::KeyState {
public:
    bool down[256] = {};
    bool pressed[256] = {};
    bool isDown(uint8_t vk) override { return down[vk]; }
    bool pressedSinceLastRead(uint8_t vk) override { return std::exchange(pressed[vk], false); }
    void press(uint8_t vk) { down[vk] = pressed[vk] = true; }
    void releaseAll() { std::fill(std::begin(down), std::end(down), false); }
};

struct AppFixture {
    QTemporaryDir folder;
    FakeDialogs dialogs;
    FakeKeys keys;
    platform::fake::FakePlatform fake;
    int exits = 0;
    std::unique_ptr<App> app;

    // Without settings: the first start.
    explicit AppFixture(const char* settings = nullptr) {
        if (settings) writeFile("settings.dat", settings);
        app = std::make_unique<App>(AppOptions{path(""), path("settings.dat"), fake.platform(), &dialogs,
                                               [this](int) { ++exits; }, &keys});
        app->loadSettings();
    }

    std::string path(const QString& name) const { return (folder.path() + "/" + name).toStdString(); }
    QString qpath(const QString& name) const { return folder.path() + "/" + name; }
    void writeFile(const QString& name, const QByteArray& bytes) const {
        QFile file(qpath(name));
        file.open(QIODevice::WriteOnly);
        file.write(bytes);
    }
    QByteArray readFile(const QString& name) const {
        QFile file(qpath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }
};

// One of the two main windows, driven alike: Record by its menu item or button.
struct Window {
    QWidget* widget;
    std::function<void()> record, stop;
    std::function<QString()> text;
    std::function<void(const QString&)> setText;
    PlayTimers* timers;
};

inline Window windowOf(App& app, bool basic) {
    if (basic) {
        BasicWindow& w = app.basicWindow();
        return {&w, [&w] { w.recordButton->click(); }, [&w] { w.stopScript(); }, [&w] { return w.text(); },
                [&w](const QString& t) { w.setText(t); }, &w.timers()};
    }
    AdvancedWindow& w = app.advancedWindow();
    return {&w, [&w] { w.recordAction->trigger(); }, [&w] { w.stopScript(); }, [&w] { return w.text(); },
            [&w](const QString& t) { w.setText(t); }, &w.timers()};
}

// Makes a folder refuse new files, also for root (by the immutable flag),
// and undoes it at the end of the scope.
class ReadOnlyFolder {
public:
    explicit ReadOnlyFolder(const QString& path) : m_path(path) {
        m_ok = ::geteuid() == 0 ? QProcess::execute("chattr", {"+i", path}) == 0
                                : QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner);
    }
    ~ReadOnlyFolder() {
        if (::geteuid() == 0)
            QProcess::execute("chattr", {"-i", m_path});
        else
            QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    bool ok() const { return m_ok; }

private:
    QString m_path;
    bool m_ok = false;
};

}  // namespace tarvoke::app::testing
