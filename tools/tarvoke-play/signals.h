#pragma once
// SIGINT and SIGTERM turned into an event of the Qt loop, so a run can stop
// at its next yield, also inside a pause.

#include <QObject>
#include <functional>

class QSocketNotifier;

namespace tarvoke::player {

class StopSignals : public QObject {
public:
    // onSignal runs in the event loop with the signal's number.
    explicit StopSignals(std::function<void(int)> onSignal);
    ~StopSignals() override;

private:
    void readSignal();
    std::function<void(int)> m_onSignal;
    QSocketNotifier* m_notifier = nullptr;
};

}  // namespace tarvoke::player
