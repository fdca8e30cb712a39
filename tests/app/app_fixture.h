#pragma once
// A whole program on the fake platform, with dialogs that answer from a
// script of the test and never block, and an exit that is only counted.

#include <QStringList>
#include <QTemporaryDir>
#include <deque>
#include <memory>

#include "app/app.h"
#include "platform/fake/fakeplatform.h"

namespace tarvoke::app::testing {

class FakeDialogs : public Dialogs {
public:
    struct Told {
        QString title;
        QString text;
        Icon icon;
    };
    std::vector<Told> told;
    std::vector<QString> asked;
    std::deque<bool> answers;      // Yes / No, in order; Yes when empty
    std::deque<SaveChoice> saveChoices;  // Cancel when empty
    std::deque<QString> paths;     // what the file dialogs return; "" (Cancel) when empty
    QStringList opened;

    void tell(const QString& title, const QString& text, Icon icon) override { told.push_back({title, text, icon}); }
    bool askYesNo(const QString&, const QString& text) override {
        asked.push_back(text);
        if (answers.empty()) return true;
        const bool answer = answers.front();
        answers.pop_front();
        return answer;
    }
    SaveChoice askSave(const QString&, const QString& text) override {
        asked.push_back(text);
        if (saveChoices.empty()) return SaveChoice::Cancel;
        const SaveChoice choice = saveChoices.front();
        saveChoices.pop_front();
        return choice;
    }
    QString openFileName(const QString&, const QString&, const QString&) override { return nextPath(); }
    QString saveFileName(const QString&, const QString&, const QString&) override { return nextPath(); }
    void openDocument(const QString& path) override { opened << path; }

private:
    QString nextPath() {
        if (paths.empty()) return {};
        QString path = paths.front();
        paths.pop_front();
        return path;
    }
};

// Key state the test sets by hand.
class FakeKeys : public platform::KeyState {
public:
    bool down[256] = {};
    bool pressed[256] = {};
    bool isDown(uint8_t vk) override { return down[vk]; }
    bool pressedSinceLastRead(uint8_t vk) override {
        const bool was = pressed[vk];
        pressed[vk] = false;
        return was;
    }
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

    explicit AppFixture(const QByteArray& settings = QByteArray(), bool withSettings = false) {
        if (withSettings) writeFile("settings.dat", settings);
        app = std::make_unique<App>(AppOptions{path(""), path("settings.dat"), fake.platform(), &dialogs,
                                               [this](int) { ++exits; }, &keys});
        app->loadSettings();
    }

    std::string path(const QString& name) const { return (folder.path() + "/" + name).toStdString(); }
    void writeFile(const QString& name, const QByteArray& bytes) const;
    QByteArray readFile(const QString& name) const;
};

}  // namespace tarvoke::app::testing
