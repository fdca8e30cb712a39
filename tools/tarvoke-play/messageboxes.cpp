#include "messageboxes.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QProcess>
#include <QProcessEnvironment>
#include <algorithm>
#include <cstdio>

namespace tarvoke::player {
namespace {

QString helperPath() { return QCoreApplication::applicationDirPath() + "/tarvoke-message"; }

}  // namespace

void HelperMessageBoxes::show(uint32_t flags, const std::string& title, const std::string& text) {
    QProcess box;
    box.setProgram(helperPath());
    box.setArguments({QString::number(flags)});
    // The box belongs on the X display the run acts on, whatever Qt
    // platform the player's own environment names.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "xcb");
    box.setProcessEnvironment(environment);
    box.setProcessChannelMode(QProcess::ForwardedChannels);
    box.start();
    if (!box.waitForStarted(-1)) {
        std::fprintf(stderr, "tarvoke-play: cannot show a message box (%s: %s); its text: %s\n",
                     helperPath().toLocal8Bit().constData(), box.errorString().toLocal8Bit().constData(),
                     text.c_str());
        return;
    }
    std::string input = title;
    input += '\0';
    input += text;
    box.write(input.data(), static_cast<qint64>(input.size()));
    box.closeWriteChannel();

    m_open.push_back(&box);
    QEventLoop wait;
    QObject::connect(&box, &QProcess::finished, &wait, &QEventLoop::quit);
    // Nothing runs between this test and the start of the loop, so the
    // end of the helper cannot slip in between.
    if (box.state() != QProcess::NotRunning) wait.exec();
    m_open.erase(std::remove(m_open.begin(), m_open.end(), &box), m_open.end());
}

void HelperMessageBoxes::closeAll() {
    for (QProcess* box : m_open) box->kill();
}

}  // namespace tarvoke::player
