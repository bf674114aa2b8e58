// tr104-demo: a few exchanges through libtr104 with whatever voice module serves the channel
// (the real one on a device, tr104-vmemu elsewhere).
#include <cstdio>
#include <cstring>

#include "tr104.h"

namespace {

void step(const char *what, int result) { std::printf("demo: %-52s -> %d\n", what, result); }

}  // namespace

int main() {
    step("tr104VoiceMsgQueuesInit(1) (module 7)", tr104VoiceMsgQueuesInit(1));

    const uint32_t value = 42;
    step("Tr104SetSimplyDataType set port 1 param 1 = 42", Tr104SetSimplyDataType(20481, 1, 1, 4, &value));

    Tr104SimpleDataBlock block{};
    block.unPortNo = 1;
    block.unParamId = 1;
    step("tr104MsgSndAndWaitIfNeedResponse get port 1 param 1",
         tr104MsgSndAndWaitIfNeedResponse(20482, &block, sizeof(block), 0));
    uint32_t stored = 0;
    std::memcpy(&stored, block.aValue, sizeof(stored));
    std::printf("demo:   the voice module holds the value %u\n", stored);

    char status[TR104_PORT_STATUS_LEN] = {};
    step("getLineStatus(1)", getLineStatus(1, status));
    uint32_t port = 0;
    std::memcpy(&port, status, sizeof(port));
    std::printf("demo:   port-status block of port %u\n", port);

    step("getLineStatus(2, NULL) (bad argument)", getLineStatus(2, nullptr));

    Tr104Msg msg;
    tr104MsgConstruct(&msg);
    char text[32] = {};
    step("CfgPreHandleGetStringParam command 2", CfgPreHandleGetStringParam(&msg, text, sizeof(text), 2));
    return 0;
}
