#pragma once
// The event loop as Qt runs it, for the windows' program and the tests that
// drive widgets: a QCoreApplication must exist.

#include "platform/eventloop.h"

namespace tarvoke::platform {

class QtLoop : public EventLoop {
public:
    std::unique_ptr<Handle> watchReadable(int fd, Callback onReadable) override;
    std::unique_ptr<Handle> watchWritable(int fd, Callback onWritable) override;
    std::unique_ptr<Handle> every(std::chrono::milliseconds interval, Callback onTick) override;
    std::unique_ptr<Handle> beforeEachTurn(Callback hook) override;
    void turn(bool wait) override;
};

}  // namespace tarvoke::platform
