// Layout checks of the channel record and internal helpers of the message layer.
#pragma once

#include <cstddef>

#include "tr104/channel.h"

static_assert(sizeof(Tr104Msg) == 4116, "Tr104Msg is 4116 bytes on every platform");
static_assert(offsetof(Tr104Msg, cmd_type) == 0);
static_assert(offsetof(Tr104Msg, cmd) == 4);
static_assert(offsetof(Tr104Msg, cfgBuffer) == 8);
static_assert(offsetof(Tr104Msg, rspBuffer) == 2056);
static_assert(offsetof(Tr104Msg, semId) == 4104);
static_assert(offsetof(Tr104Msg, sndQueueId) == 4108);
static_assert(offsetof(Tr104Msg, rcvQueueId) == 4112);
static_assert(sizeof(Tr104WireMsg) == sizeof(long) + TR104_MSG_TEXT_LEN ||
                  sizeof(Tr104WireMsg) == sizeof(long) + TR104_MSG_TEXT_LEN + 4,
              "the kernel buffer is a long type word followed by the 4100-byte text");
static_assert(offsetof(Tr104WireMsg, text) == sizeof(long));
static_assert(TR104_TEXT_RSP_OFFSET + TR104_RSP_BUFFER_LEN == TR104_MSG_TEXT_LEN);

#include <sys/types.h>

namespace tr104::core {

// Opens the channel's lock (key 36) when this process has not yet, and resets it to free.
bool openChannelLock();
// Opens the queue with key when *id is still -1; prints failure (with errno) when it cannot.
bool openQueue(int32_t *id, key_t key, const char *failure);

}  // namespace tr104::core
