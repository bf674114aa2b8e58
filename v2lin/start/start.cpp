// Stand-alone start-up: main() adopts nothing; it creates "tUsrRoot" at the highest real-time
// priority, whose body starts the timer task and then sleeps for ever.
#include <errno.h>
#include <pthread.h>
#include <sched.h>
#include <stdlib.h>

#include "v2lin/v2lin.h"
#include "v2lin_start.h"

namespace {

constexpr int kForever = 500;

// Puts a POSIX priority into a freshly initialised block's attributes.
void setAttrPriority(V2LIN_TCB *tcb, int priority) {
    struct sched_param sp {};
    sp.sched_priority = priority;
    pthread_attr_setschedparam(&tcb->attr, &sp);
}

}  // namespace

extern "C" int32_t root_task(int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t) {
    V2LIN_TCB excTask;
    taskInit(&excTask, "tExcTask", 0, 0, nullptr, 0, exception_task, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    setAttrPriority(&excTask, sched_get_priority_max(SCHED_FIFO) - 1);
    taskActivate(excTask.taskId);
    for (;;)
        taskDelay(kForever);
    return 0;
}

int main() {
    V2LIN_TCB usrRoot;
    taskInit(&usrRoot, "tUsrRoot", 0, 0, nullptr, 0, root_task, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    setAttrPriority(&usrRoot, sched_get_priority_max(SCHED_FIFO));
    taskActivate(usrRoot.taskId);
    errno = 0;
    exit(exit_value);
}
