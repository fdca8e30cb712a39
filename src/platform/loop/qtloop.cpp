#include "platform/loop/qtloop.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>

namespace tarvoke::platform {
namespace {

template <typename QtObject>
class QtHandle : public EventLoop::Handle {
public:
    explicit QtHandle(std::unique_ptr<QtObject> object) : m_object(std::move(object)) {}

private:
    std::unique_ptr<QtObject> m_object;
};

}  // namespace

std::unique_ptr<EventLoop::Handle> QtLoop::watchReadable(int fd, Callback onReadable) {
    auto notifier = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, std::move(onReadable));
    return std::make_unique<QtHandle<QSocketNotifier>>(std::move(notifier));
}

std::unique_ptr<EventLoop::Handle> QtLoop::every(std::chrono::milliseconds interval, Callback onTick) {
    auto timer = std::make_unique<QTimer>();
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer.get(), &QTimer::timeout, std::move(onTick));
    timer->start(interval);
    return std::make_unique<QtHandle<QTimer>>(std::move(timer));
}

std::unique_ptr<EventLoop::Handle> QtLoop::beforeEachTurn(Callback hook) {
    // A turn that may sleep announces itself with aboutToBlock, one that may
    // not with awake. The connections end with their context object.
    auto context = std::make_unique<QObject>();
    if (QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance()) {
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, context.get(), hook);
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, context.get(), std::move(hook));
    }
    return std::make_unique<QtHandle<QObject>>(std::move(context));
}

void QtLoop::turn(bool wait) {
    QCoreApplication::processEvents(wait ? QEventLoop::WaitForMoreEvents : QEventLoop::AllEvents);
}

}  // namespace tarvoke::platform
