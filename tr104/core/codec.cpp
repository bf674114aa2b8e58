// Codec tables and conversions between data-model names, inner names, payload-type codes and
// bit rates, and the per-line codec list of the SIP profile.
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "tr104/codec.h"
#include "tr104/common.h"

static_assert(sizeof(CodecListUnit) == 20);
static_assert(offsetof(CodecListUnit, unLineNo) == 0);
static_assert(offsetof(CodecListUnit, unChangeMask) == 4);
static_assert(offsetof(CodecListUnit, nCodecType) == 8);
static_assert(offsetof(CodecListUnit, unPriority) == 12);
static_assert(offsetof(CodecListUnit, ucPacketizationPeriod) == 16);
static_assert(offsetof(CodecListUnit, ucSilenceSuppression) == 17);
static_assert(offsetof(CodecListUnit, ucEnable) == 18);

namespace {

struct CodecInfo {
    const char *tr069Name;
    int code;
    const char *innerName;  // nullptr: no inner name
    unsigned bitRate;
};

// Kept in the order names are matched: "G.711ALaw", "G.711MuLaw", "G.723.1", "G.729", "G.722"
// and finally the empty text.
constexpr CodecInfo kCodecs[] = {
    {"G.711ALaw", 8, "pcma", 64000}, {"G.711MuLaw", 0, "pcmu", 64000}, {"G.723.1", 4, "g7231", 5300},
    {"G.729", 18, "g729", 8000},     {"G.722", 9, "g722", 64000},      {"", TR104_CODEC_NONE, nullptr, 0},
};

constexpr unsigned kDefaultBitRate = 64000;
constexpr int kBitRateFirstCode = 4;
constexpr int kBitRateLastCode = 18;

// Bit rates of codes 4..18, indexed by code - 4: the table's rate where a codec has that code,
// 64000 everywhere else.
constexpr std::array<uint16_t, kBitRateLastCode - kBitRateFirstCode + 1> kBitRates = [] {
    std::array<uint16_t, kBitRateLastCode - kBitRateFirstCode + 1> rates{};
    for (size_t i = 0; i < rates.size(); ++i) {
        rates[i] = static_cast<uint16_t>(kDefaultBitRate);
        for (const CodecInfo &c : kCodecs) {
            if (c.code == kBitRateFirstCode + static_cast<int>(i))
                rates[i] = static_cast<uint16_t>(c.bitRate);
        }
    }
    return rates;
}();
static_assert(kBitRates.size() == 15 && kBitRates.front() == 5300 && kBitRates.back() == 8000 &&
              kBitRates[8 - kBitRateFirstCode] == 64000);

}  // namespace

CodecListUnit gCodecListUnit[TR104_CODEC_LIST_LINES * TR104_CODEC_LIST_ENTRIES];

extern "C" {

int ConvertCodecTypeStr2Int(const char *pCodecType) {
    for (const CodecInfo &c : kCodecs) {
        if (stricmp(pCodecType, c.tr069Name) == 0)
            return c.code;
    }
    std::printf("param error, *pCodecType=%s.\n", pCodecType != nullptr ? pCodecType : "(null)");
    return TR104_CODEC_UNKNOWN;
}

const char *ConvertCodecTypeInt2Str(int nCodecType) {
    for (const CodecInfo &c : kCodecs) {
        if (c.code == nCodecType)
            return c.tr069Name;
    }
    std::printf("param error, nCodecType=%d.\n", nCodecType);
    return "";
}

const char *ConvertCodecTypeInnerStr2Tr069Str(const char *InnerCodecStr) {
    if (InnerCodecStr == nullptr) {
        std::printf("param error, InnerCodecStr is NULL.\n");
        return "";
    }
    for (const CodecInfo &c : kCodecs) {
        if (c.innerName != nullptr && std::strcmp(InnerCodecStr, c.innerName) == 0)
            return c.tr069Name;
    }
    std::printf("param error, InnerCodecStr=%s.\n", InnerCodecStr);
    return "";
}

unsigned int tr104GetBitRateByCodecEnum(int nCodecType) {
    if (nCodecType < kBitRateFirstCode || nCodecType > kBitRateLastCode)
        return kDefaultBitRate;
    return kBitRates[static_cast<size_t>(nCodecType - kBitRateFirstCode)];
}

void CodecListUnitConfigInit(void) {
    std::memset(gCodecListUnit, 0, sizeof gCodecListUnit);
    for (size_t i = 0; i < std::size(gCodecListUnit); ++i) {
        gCodecListUnit[i].unLineNo = static_cast<uint32_t>(i / TR104_CODEC_LIST_ENTRIES + 1);
        gCodecListUnit[i].nCodecType = TR104_CODEC_NONE;
        gCodecListUnit[i].ucEnable = 1;
    }
}

}  // extern "C"
