#include "platform/loop/qtloop.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>

namespace tarvoke::platform {
namespace {

// Counts the calls of a callback in progress, so that its handle can tell
// whether it is ended from inside one.
EventLoop::Callback counted(std::shared_ptr<int> running, EventLoop::Callback callback) {
    return [running = std::move(running), callback = std::move(callback)] {
        ++*running;
        callback();
        --*running;
    };
}

// A Qt object may not be deleted inside its own signal: a handle ended from
// its own callback silences its object and leaves the deletion to the loop.
class QtHandle : public EventLoop::Handle {
public:
    QtHandle(std::unique_ptr<QObject> object, std::shared_ptr<int> running)
        : m_object(std::move(object)), m_running(std::move(running)) {}
    ~QtHandle() override {
        if (*m_running == 0) return;
        if (auto* timer = qobject_cast<QTimer*>(m_object.get())) timer->stop();
        if (auto* notifier = qobject_cast<QSocketNotifier*>(m_object.get())) notifier->setEnabled(false);
        m_object->blockSignals(true);
        m_object.release()->deleteLater();
    }

private:
    std::unique_ptr<QObject> m_object;
    std::shared_ptr<int> m_running;
};

}  // namespace

namespace {

std::unique_ptr<EventLoop::Handle> notify(int fd, QSocketNotifier::Type type, EventLoop::Callback callback) {
    auto notifier = std::make_unique<QSocketNotifier>(fd, type);
    auto running = std::make_shared<int>(0);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, counted(running, std::move(callback)));
    return std::make_unique<QtHandle>(std::move(notifier), std::move(running));
}

}  // namespace

std::unique_ptr<EventLoop::Handle> QtLoop::watchReadable(int fd, Callback onReadable) {
    return notify(fd, QSocketNotifier::Read, std::move(onReadable));
}

std::unique_ptr<EventLoop::Handle> QtLoop::watchWritable(int fd, Callback onWritable) {
    return notify(fd, QSocketNotifier::Write, std::move(onWritable));
}

std::unique_ptr<EventLoop::Handle> QtLoop::every(std::chrono::milliseconds interval, Callback onTick) {
    auto timer = std::make_unique<QTimer>();
    timer->setTimerType(Qt::PreciseTimer);
    auto running = std::make_shared<int>(0);
    QObject::connect(timer.get(), &QTimer::timeout, counted(running, std::move(onTick)));
    timer->start(interval);
    return std::make_unique<QtHandle>(std::move(timer), std::move(running));
}

std::unique_ptr<EventLoop::Handle> QtLoop::beforeEachTurn(Callback hook) {
    // A turn that may sleep announces itself with aboutToBlock, one that may
    // not with awake. The connections end with their context object.
    auto context = std::make_unique<QObject>();
    auto running = std::make_shared<int>(0);
    hook = counted(running, std::move(hook));
    if (QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance()) {
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, context.get(), hook);
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, context.get(), std::move(hook));
    }
    return std::make_unique<QtHandle>(std::move(context), std::move(running));
}

void QtLoop::turn(bool wait) {
    QCoreApplication::processEvents(wait ? QEventLoop::WaitForMoreEvents : QEventLoop::AllEvents);
}

}  // namespace tarvoke::platform
