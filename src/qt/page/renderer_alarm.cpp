#include "qt/page/renderer_alarm.h"

#include <sys/time.h>

namespace skarnel {

void endUnlessCalledWithin(int milliseconds) {
    itimerval alarm{};
    alarm.it_value.tv_sec = milliseconds / 1000;
    alarm.it_value.tv_usec = milliseconds % 1000 * 1000;
    ::setitimer(ITIMER_REAL, &alarm, nullptr);
}

}  // namespace skarnel
