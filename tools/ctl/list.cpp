// `tr104ctl list`.
#include "ctl/list.h"

#include <cstdio>

#include "ctl/kinds.h"

namespace tr104ctl {

int listHandlers() {
    for (const HandlerKind &row : allKinds()) {
        std::printf("%-36s %s", row.name, kindName(row).c_str());
        if (row.deferredSlot >= 0) {
            std::printf(", a set is staged in deferred slot %d", row.deferredSlot);
        }
        std::printf("\n");
    }
    return 0;
}

}  // namespace tr104ctl
