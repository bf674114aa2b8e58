// Codec tables: name and code conversions, bit rates and the codec list's initial state.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include "common/stdout_capture.h"
#include "tr104/codec.h"

namespace {

using tr104test::capturedStdout;

TEST(CodecNames, NameToCode) {
    struct Case {
        const char *name;
        int code;
        const char *message;
    } cases[] = {
        {"G.711ALaw", 8, ""},
        {"g.711alaw", 8, ""},  // case-insensitive
        {"G.711MuLaw", 0, ""},
        {"G.711MULAW", 0, ""},
        {"G.723.1", 4, ""},
        {"G.729", 18, ""},
        {"g.722", 9, ""},
        {"", -1, ""},
        {"G.711", -2, "param error, *pCodecType=G.711.\n"},
        {"pcmu", -2, "param error, *pCodecType=pcmu.\n"},
        {"G.729 ", -2, "param error, *pCodecType=G.729 .\n"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(capturedStdout([&] { EXPECT_EQ(ConvertCodecTypeStr2Int(c.name), c.code) << c.name; }), c.message);
    }
    EXPECT_EQ(capturedStdout([] { EXPECT_EQ(ConvertCodecTypeStr2Int(nullptr), -2); }),
              "param error, *pCodecType=(null).\n");
}

TEST(CodecNames, CodeToName) {
    struct Case {
        int code;
        const char *name;
        bool message;
    } cases[] = {
        {0, "G.711MuLaw", false}, {4, "G.723.1", false}, {8, "G.711ALaw", false}, {9, "G.722", false},
        {18, "G.729", false},     {-1, "", false},       {3, "", true},           {256, "", true},
        {-2, "", true},
    };
    for (const Case &c : cases) {
        std::string out = capturedStdout([&] { EXPECT_STREQ(ConvertCodecTypeInt2Str(c.code), c.name) << c.code; });
        EXPECT_EQ(out, c.message ? "param error, nCodecType=" + std::to_string(c.code) + ".\n" : "");
        // Every known name converts back to its code.
        if (!c.message) {
            EXPECT_EQ(ConvertCodecTypeStr2Int(ConvertCodecTypeInt2Str(c.code)), c.code);
        }
    }
}

TEST(CodecNames, InnerNameToName) {
    struct Case {
        const char *inner, *name, *message;
    } cases[] = {
        {"pcmu", "G.711MuLaw", ""},
        {"pcma", "G.711ALaw", ""},
        {"g7231", "G.723.1", ""},
        {"g729", "G.729", ""},
        {"g722", "G.722", ""},
        {"PCMU", "", "param error, InnerCodecStr=PCMU.\n"},  // case-sensitive
        {"", "", "param error, InnerCodecStr=.\n"},
        {"G.729", "", "param error, InnerCodecStr=G.729.\n"},
        {nullptr, "", "param error, InnerCodecStr is NULL.\n"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(capturedStdout([&] { EXPECT_STREQ(ConvertCodecTypeInnerStr2Tr069Str(c.inner), c.name); }), c.message);
    }
}

TEST(CodecBitRate, Table) {
    struct Case {
        int code;
        unsigned rate;
    } cases[] = {
        {0, 64000},  {4, 5300},   {18, 8000}, {19, 64000},  {8, 64000},   {9, 64000},       {5, 64000},
        {17, 64000}, {-1, 64000}, {3, 64000}, {256, 64000}, {260, 64000}, {INT_MIN, 64000}, {INT_MAX, 64000},
    };
    for (const Case &c : cases)
        EXPECT_EQ(tr104GetBitRateByCodecEnum(c.code), c.rate) << c.code;
}

TEST(CodecListUnit, InitialValues) {
    std::memset(gCodecListUnit, 0xAB, sizeof gCodecListUnit);
    CodecListUnitConfigInit();
    for (int line = 1; line <= TR104_CODEC_LIST_LINES; ++line) {
        for (int entry = 1; entry <= TR104_CODEC_LIST_ENTRIES; ++entry) {
            CodecListUnit expected;
            std::memset(&expected, 0, sizeof expected);
            expected.unLineNo = static_cast<uint32_t>(line);
            expected.nCodecType = -1;
            expected.ucEnable = 1;
            EXPECT_EQ(std::memcmp(&gCodecListUnit[TR104_CODEC_LIST_INDEX(line, entry)], &expected, sizeof expected), 0)
                << "line " << line << " entry " << entry;
        }
    }
    EXPECT_EQ(TR104_CODEC_LIST_INDEX(2, 5), 9);
    EXPECT_EQ(sizeof gCodecListUnit / sizeof gCodecListUnit[0], 10u);
}

}  // namespace
