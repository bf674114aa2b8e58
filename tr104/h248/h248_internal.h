// The shapes the H.248 handlers share, as descriptors and one generic body each:
//  - a field of a block the voice module keeps (blockValue): get fetches the block and picks
//    the field, set sends a zeroed block with the field and its change-mask bit,
//  - a value held in library memory (heldValue).
// The argument checks, record exchanges and text tables are the ones the SIP handlers use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tr104/h248.h"
#include "tr104/core/core.h"

// The blocks are the voice module's layouts: the same offsets on the 64-bit host and on the
// 32-bit device.
static_assert(sizeof(Tr104H248MgcBlock) == 432);
static_assert(offsetof(Tr104H248MgcBlock, aMgcAddr) == 2);
static_assert(offsetof(Tr104H248MgcBlock, usMgcPort) == 270);
static_assert(offsetof(Tr104H248MgcBlock, unMgcIndex) == 280);
static_assert(offsetof(Tr104H248MgcBlock, unCurrMgcNum) == 284);
static_assert(offsetof(Tr104H248MgcBlock, unMgcStatus) == 288);
static_assert(offsetof(Tr104H248MgcBlock, aCurrMgcAddr) == 292);
static_assert(sizeof(Tr104H248MidBlock) == 80);
static_assert(offsetof(Tr104H248MidBlock, unRegMode) == 4);
static_assert(offsetof(Tr104H248MidBlock, aMid) == 10);
static_assert(sizeof(Tr104H248PhyNameBlock) == 32);
static_assert(offsetof(Tr104H248PhyNameBlock, aPrefix) == 2);
static_assert(offsetof(Tr104H248PhyNameBlock, unStart) == 20);
static_assert(offsetof(Tr104H248PhyNameBlock, unAddLen) == 24);
static_assert(offsetof(Tr104H248PhyNameBlock, unFillFlag) == 28);
static_assert(sizeof(Tr104H248EphNameBlock) == 104);
static_assert(offsetof(Tr104H248EphNameBlock, usInstance) == 2);
static_assert(offsetof(Tr104H248EphNameBlock, aPrefix) == 4);
static_assert(offsetof(Tr104H248EphNameBlock, unStart) == 20);
static_assert(offsetof(Tr104H248EphNameBlock, unEnd) == 24);
static_assert(offsetof(Tr104H248EphNameBlock, unStep) == 28);
static_assert(offsetof(Tr104H248EphNameBlock, unAddLen) == 32);
static_assert(offsetof(Tr104H248EphNameBlock, aTail) == TR104_H248_EPH_FILL_OFFSET);
static_assert(sizeof(Tr104H248TermIdBlock) == 128);
static_assert(offsetof(Tr104H248TermIdBlock, aTermId) == 4);
static_assert(sizeof(Tr104H248AliveBlock) == 124);
static_assert(offsetof(Tr104H248AliveBlock, unMode) == 4);
static_assert(offsetof(Tr104H248AliveBlock, unCycle) == 8);
static_assert(offsetof(Tr104H248AliveBlock, unCount) == 12);
static_assert(offsetof(Tr104H248AliveBlock, unFormat) == 20);
static_assert(sizeof(Tr104H248TransTimerBlock) == 28);
static_assert(offsetof(Tr104H248TransTimerBlock, unRetranInitial) == 4);
static_assert(offsetof(Tr104H248TransTimerBlock, unRetranCycle) == 12);
static_assert(offsetof(Tr104H248TransTimerBlock, unRetranTime) == 16);
static_assert(offsetof(Tr104H248TransTimerBlock, unMaxRetranCount) == 20);
static_assert(offsetof(Tr104H248TransTimerBlock, unHandShake) == 24);
static_assert(sizeof(Tr104H248RegBlock) == 32);
static_assert(offsetof(Tr104H248RegBlock, unRegisterCycle) == 8);
static_assert(sizeof(Tr104H248AuthBlock) == 588);
static_assert(offsetof(Tr104H248AuthBlock, unAuthMethod) == 4);
static_assert(sizeof(Tr104H248LocalPortBlock) == 16);
static_assert(offsetof(Tr104H248LocalPortBlock, unLocalPort) == 4);
static_assert(sizeof(Tr104H248DigitTimerBlock) == 40);
static_assert(offsetof(Tr104H248DigitTimerBlock, unDialTone) == 4);
static_assert(offsetof(Tr104H248DigitTimerBlock, unNoAnswer) == 8);
static_assert(offsetof(Tr104H248DigitTimerBlock, unBusyTone) == 20);
static_assert(offsetof(Tr104H248DigitTimerBlock, unHangingReminder) == 24);
static_assert(offsetof(Tr104H248DigitTimerBlock, unStartDigit) == 28);
static_assert(offsetof(Tr104H248DigitTimerBlock, unShortDigit) == 32);
static_assert(offsetof(Tr104H248DigitTimerBlock, unLongDigit) == 36);
static_assert(sizeof(Tr104H248LineEnableBlock) == 128);
static_assert(offsetof(Tr104H248LineEnableBlock, unEnable) == 120);
static_assert(sizeof(Tr104H248MatchModeBlock) == 28);
static_assert(offsetof(Tr104H248MatchModeBlock, unMatchMode) == 12);
static_assert(sizeof(Tr104H248RtpPortBlock) == 12);
static_assert(offsetof(Tr104H248RtpPortBlock, unMaxPort) == 4);
static_assert(sizeof(Tr104H248FaxBlock) == 48);
static_assert(offsetof(Tr104H248FaxBlock, unEventDetect) == 12);
static_assert(offsetof(Tr104H248FaxBlock, unVbdEnable) == 16);
static_assert(offsetof(Tr104H248FaxBlock, unVbdRxInterval) == 20);
static_assert(offsetof(Tr104H248FaxBlock, unVbdTxInterval) == 24);
static_assert(offsetof(Tr104H248FaxBlock, unVbdCodec) == 28);
static_assert(offsetof(Tr104H248FaxBlock, unFaxCtrlMode) == 44);
static_assert(sizeof(Tr104H248CallerIdBlock) == 16);
static_assert(offsetof(Tr104H248CallerIdBlock, unMode) == 8);
static_assert(sizeof(Tr104H248PortStatusBlock) == 276);
static_assert(offsetof(Tr104H248PortStatusBlock, ucSessionType) == 1);
static_assert(offsetof(Tr104H248PortStatusBlock, ucPortState) == 2);
static_assert(offsetof(Tr104H248PortStatusBlock, ucServiceState) == 3);
static_assert(offsetof(Tr104H248PortStatusBlock, unLocalRtpPort) == 4);
static_assert(offsetof(Tr104H248PortStatusBlock, unAnnounceType) == 8);
static_assert(offsetof(Tr104H248PortStatusBlock, aRegState) == 33);
static_assert(offsetof(Tr104H248PortStatusBlock, aHookState) == 254);
static_assert(sizeof(Tr104H248StatsBlock) == 124);
static_assert(offsetof(Tr104H248StatsBlock, unIncomingReceived) == 4);
static_assert(offsetof(Tr104H248StatsBlock, unPotsOffHookTimer) == 56);
static_assert(offsetof(Tr104H248StatsBlock, unRcvdReqs) == 60);
static_assert(offsetof(Tr104H248StatsBlock, unSendResponses) == 72);
static_assert(offsetof(Tr104H248StatsBlock, unPacketLoss) == 108);
static_assert(offsetof(Tr104H248StatsBlock, unPacketUnknown) == 120);

namespace tr104::h248 {

using core::Access;
using core::Locate;
using core::Signature;
using core::TextCode;

// A block of the voice module with its commands.
struct Block {
    uint16_t len;
    uint16_t getCmd;
    uint16_t setCmd;
    const char *setError;  // send failed ("%d" the line where it has one)
    const char *getError = "get param failed\n";  // fetch failed
};

// How a field of a block maps to the data model's value.
enum class Conv : uint8_t {
    Word,  // an integer of `width` bytes (2 or 4), times `scale` in the block
    Text,  // NUL-terminated text of `width` bytes, at most `high` characters on set
    Inverted,  // data-model uniform flag <-> the block's fill flag (0 <-> 1)
    PlusOne,  // data model 1..3 <-> block 0..2
    MgcStatus,  // internal code 0, 1, 2, other -> 1, 2, 0, 3 (get only)
    Codes,  // a text value through `codes`; a get of an unlisted code reads the last row
    AddWord,  // get only: the field is added to the caller's value
    Byte,  // get only: a single byte
    RegText,  // get only: registration text -> data-model state text
    ServerStatus,  // get only: registration text -> 0, 1, 2, 5
};

// Which instance word a request carries.
enum class Where : uint8_t {
    None,
    Line,  // word 0 = nLocate[2]
    Port,  // word 0 = nLocate[1], checked 1..2
    Line1,  // word 0 = 1 whatever the path (gateway-wide counters)
    Instance,  // 16-bit word at offset 2 = nLocate[2]
    Primary,  // MGC index 0, checked in the reply
    Secondary,  // MGC index 1, checked in the reply
};

struct BlockValue {
    Signature sig;
    const Block *block;
    uint16_t offset;
    uint8_t width;
    Conv conv;
    uint16_t bit;  // change-mask bit of the field, 0 for none
    int low, high;  // accepted set values (Text: high is the longest text)
    const char *rangeError;  // "%d" (or "%s") the refused value
    Where where = Where::None;
    uint32_t scale = 1;
    uint8_t stride = 0;  // Line: the field of line n is at offset + (n - 1) * stride
    const TextCode *codes = nullptr;  // Codes: the names; Word: the only values a set accepts
    uint8_t codeCount = 0;
    const char *getError = nullptr;  // null: the block's ("%d" the line)
    const char *done = nullptr;  // debug after a get ("%d" the line, then the value); null:
        // "nFlag[%d], <valueName>[%d]\n"
    bool readFirst = false;  // a set fetches the block and sends it back changed
    // `done` serves a get and a set: "%d" the flag, "%s" the value, "%d" the line.
    bool doneNamesFlag = false;
};

int blockValue(const BlockValue &v, int nFlag, void *pValue, int *nLocate);

// A value held in library memory.
struct HeldValue {
    Signature sig;
    void *storage;
    uint8_t size;  // bytes of the storage (texts: the buffer, keeps size - 1 characters)
    bool text;
    int low, high;  // integers: accepted set values
    bool anyValue;  // integers: no range check
    const TextCode *accepted = nullptr;  // texts: the only values a set accepts (null: any)
    uint8_t acceptedCount = 0;
    const char *rangeError = nullptr;
    // The debug line's name for the value, when it is not the one a null pointer is reported with.
    const char *shownName = nullptr;
};

int heldValue(const HeldValue &v, int nFlag, void *pValue);

// Common argument checks: null value, instance (Port: nLocate[1]), nFlag.  0 or -2.
int checkArgs(const Signature &sig, Where where, int nFlag, const void *pValue, const int *nLocate);

// Fetches a whole block for a get; `line` goes to the block's instance word.  0 or -1.
int fetchBlock(const char *name, const Block &block, void *data, Where where, int line);

// The line or port a checked request concerns.
int instanceOf(Where where, const int *nLocate);

}  // namespace tr104::h248
