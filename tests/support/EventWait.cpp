// Event-loop runs of a fixed length for tests.
#include "support/EventWait.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

namespace testsupport {

void runEventsFor(int ms) {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(1);
    }
}

} // namespace testsupport
