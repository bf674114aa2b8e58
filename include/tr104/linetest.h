/*
 * Phone ports, line tests and the simulated call test.
 *
 * Physical-interface handlers serve the two analogue ports: names and identifiers, dial mode,
 * dial-tone timing, polarity reversal, metering pulse (Kc) type, caller-id timing and the
 * hook-flash times.  Line tests run in the voice module: the agent chooses a test with the
 * selector, writes "Requested" to the test state, polls the state until "Complete" (or an
 * error) and reads the measurements, the flag words and the conclusion.  The simulated call
 * test places a call from a port (caller test) or waits for one (called test) and reports how
 * far the call got.
 *
 * Handler convention: nFlag 0 get, 1 set; nLocate[1] is the port (1 or 2); 0, -1 (exchange
 * failed) or -2 (bad argument).  Text values are copied into the caller's buffer (32 bytes
 * suffice for every text of this area).  Several texts are copied without their terminating NUL
 * (test state, simulated-call type, status and conclusion): the caller zeroes its buffer.
 * Gateway-wide values (caller-id timing and polarity, MWI ring flag, hook-flash times) take no
 * nLocate.  Floating-point values are single precision (float).
 *
 * Records hold integers in the platform's byte order; measurements are decimal texts of 16 bytes.
 */
#ifndef TR104_LINETEST_H
#define TR104_LINETEST_H

#include <stdint.h>

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

/* Command ids */
#define GET_PORT_DRAW_TIME_ID 89u /* port record: dial-tone draw time */
#define SET_SMULT_TEST_ID 51u /* simulated call: start */
#define GET_SMULT_TEST_ID 76u /* simulated call: query */
#define SET_DIAL_CONFIRM_ID 81u
#define GET_DIAL_CONFIRM_ID 82u
#define SET_CODEC_TIME_ID 8193u /* hook-flash times */
#define GET_CODEC_TIME_ID 8194u
#define SET_PORT_TEST_STATE_ID 8213u /* line test: start */
#define GET_PORT_TEST_STATE_ID 8214u /* line test: progress */
#define GET_OUTER_LINE_TEST_ID 8216u /* line test: outer-line results */
#define GET_INNER_LINE_TEST_ID 8217u /* line test: inner-line results */
#define SET_KC_TYPE_ID 8218u
#define GET_KC_TYPE_ID 8219u
#define SET_PORT_DIAL_MODE_ID 12400u
#define GET_PORT_DIAL_MODE_ID 12401u

#define TR104_LINETEST_PORTS 2
#define TR104_LINETEST_TEXT_LEN 32 /* selector, state, called number */
#define TR104_MEASURE_LEN 16 /* one decimal text of a result record */

/* Line-test type codes and progress values of the test-state record */
#define TR104_TEST_TYPE_OUTER 0x81u
#define TR104_TEST_TYPE_INNER 0x83u
#define TR104_TEST_BUSY_ALLOWED 1u
#define TR104_TEST_BUSY_REFUSED 2u
#define TR104_TEST_PROGRESS_TESTING 2u
#define TR104_TEST_PROGRESS_FINISHED 3u

/* Port record (276 bytes) */
typedef struct Tr104PortRecord {
    uint8_t ucPort; /* 0 */
    uint8_t aReserved1[137];
    int8_t cDialMode; /* 138: 0 First, 1 DTMF, 2 Pulse */
    uint8_t aReserved2[25];
    uint32_t unDialToneDrawTime; /* 164: milliseconds */
    uint8_t aReserved3[108];
} Tr104PortRecord;

/* Kc record (36 bytes) */
typedef struct Tr104KcRecord {
    uint32_t unPort; /* 0 */
    uint32_t aReserved[6];
    uint32_t unKcType; /* 28: 0 16Kc, 1 12Kc, 2 disable */
    uint32_t unReserved;
} Tr104KcRecord;

/* Hook-flash record (20 bytes) */
#define TR104_FLASH_DOWN 1u
#define TR104_FLASH_UP 2u
typedef struct Tr104FlashRecord {
    uint32_t unSelector; /* 0: 1 flash-down, 2 flash-up */
    uint32_t unFlashDown; /* 4: ms */
    uint32_t unFlashUp; /* 8: ms */
    uint32_t aReserved[2];
} Tr104FlashRecord;

/* Test-state record (37 bytes) */
typedef struct Tr104TestStateRecord {
    uint8_t aReserved1[2];
    uint8_t ucPort; /* 2 */
    uint8_t ucTestType; /* 3: 0x81 outer, 0x83 inner */
    uint8_t ucProgress; /* 4: start: busy mode 1/2; query: 2 testing, 3 finished */
    uint8_t ucResult; /* 5: query: 0 completed, other not supported */
    uint8_t aReserved2[31];
} Tr104TestStateRecord;

/* Outer-line result record (327 bytes) */
typedef struct Tr104OuterLineResult {
    uint8_t aReserved1[2];
    uint8_t ucPort; /* 2 */
    uint8_t aReserved2[34];
    uint8_t ucConclusion; /* 37 */
    char aGroundDCVoltage[TR104_MEASURE_LEN]; /* 38 */
    char bGroundDCVoltage[TR104_MEASURE_LEN]; /* 54 */
    char abDCVoltage[TR104_MEASURE_LEN]; /* 70 */
    char aGroundInsulationResistance[TR104_MEASURE_LEN]; /* 86 */
    char bGroundInsulationResistance[TR104_MEASURE_LEN]; /* 102 */
    char abInsulationResistance[TR104_MEASURE_LEN]; /* 118 */
    char abPolarityReversalResistance[TR104_MEASURE_LEN]; /* 134 */
    char aGroundCapacitance[TR104_MEASURE_LEN]; /* 150 */
    char bGroundCapacitance[TR104_MEASURE_LEN]; /* 166 */
    char abCapacitance[TR104_MEASURE_LEN]; /* 182 */
    char aGroundACVoltage[TR104_MEASURE_LEN]; /* 198 */
    char bGroundACVoltage[TR104_MEASURE_LEN]; /* 214 */
    char abACVoltage[TR104_MEASURE_LEN]; /* 230 */
    char loopResistance[TR104_MEASURE_LEN]; /* 246 */
    char ringerEquivalentNumber[TR104_MEASURE_LEN]; /* 262 */
    uint8_t aReserved3[49];
} Tr104OuterLineResult;

/* Inner-line result record (185 bytes) */
typedef struct Tr104InnerLineResult {
    uint8_t aReserved1[2];
    uint8_t ucPort; /* 2 */
    uint8_t aReserved2[34];
    uint8_t ucSignalToneState; /* 37: 0 = passed */
    uint8_t ucFeederVoltageState; /* 38: 0 = passed */
    uint8_t ucReserved3;
    char loopCurrent[TR104_MEASURE_LEN]; /* 40 */
    char feederVoltage[TR104_MEASURE_LEN]; /* 56 */
    char signalToneVolume[TR104_MEASURE_LEN]; /* 72 */
    char signalToneFrequency[TR104_MEASURE_LEN]; /* 88 */
    char ringingCurrentVoltage[TR104_MEASURE_LEN]; /* 104 */
    uint8_t ucReserved4;
    char quietChannelPower[TR104_MEASURE_LEN]; /* 121 */
    uint8_t aReserved5[48];
} Tr104InnerLineResult;

/* Simulated-call parameter block (288 bytes) */
#define TR104_SMULT_QUERY_CALLED 5u
#define TR104_SMULT_QUERY_CALLER 6u
typedef struct Tr104SmultParam {
    uint32_t unTestType; /* 0: start: type 1..4; query: 5 called, 6 caller, 0 none */
    uint32_t unReserved1;
    uint32_t unPort; /* 8 */
    uint32_t unTimeout; /* 12 */
    char aCalledNum[TR104_LINETEST_TEXT_LEN]; /* 16 */
    uint32_t unReserved2;
    uint32_t unCallerStatus; /* 52 */
    uint32_t unCalledStatus; /* 56 */
    uint32_t aReserved3[8];
    uint32_t unConclusion; /* 92: 1 or 3 success */
    uint32_t aReserved4[8];
    uint32_t unCallerFailCode; /* 128 */
    uint32_t unCalledFailCode; /* 132 */
    uint32_t aReserved5[38];
} Tr104SmultParam;

/* Dial-confirm block (20 bytes) */
#define TR104_DIAL_CONFIRM_ENABLE 1u
#define TR104_DIAL_CONFIRM_DIGIT 2u
typedef struct Tr104DialConfirmRecord {
    uint32_t unSelector; /* 0: 1 enable flag, 2 confirm digit */
    uint32_t unPort; /* 4 */
    uint32_t unEnable; /* 8 */
    char cDigit; /* 12 */
    uint8_t aReserved[3];
    uint32_t unResult; /* 16: 1 success */
} Tr104DialConfirmRecord;

/* Simulated-call test types (gSmultTestType) */
#define TR104_SMULT_NONE 0
#define TR104_SMULT_CALLED 1
#define TR104_SMULT_CALLER 2
#define TR104_SMULT_CALLED_STOPPED 3
#define TR104_SMULT_CALLER_STOPPED 4

/* Line-test state of the library, one entry per port (index port - 1) */
TR104_API extern char gTestSelector[TR104_LINETEST_PORTS][TR104_LINETEST_TEXT_LEN];
TR104_API extern char gTestState[TR104_LINETEST_PORTS][TR104_LINETEST_TEXT_LEN];
TR104_API extern int32_t gTestProgess[TR104_LINETEST_PORTS];
TR104_API extern int32_t gIsTestOnBusy[TR104_LINETEST_PORTS];
/* Thresholds written by the agent: stored as given, no range check, no unit conversion */
TR104_API extern int32_t gVDCHazardousThreshold[TR104_LINETEST_PORTS];
TR104_API extern int32_t gVACHazardousThreshold[TR104_LINETEST_PORTS];
TR104_API extern int32_t gVDCForeignThreshold[TR104_LINETEST_PORTS];
TR104_API extern int32_t gVACForeignThreshold[TR104_LINETEST_PORTS];
TR104_API extern int32_t gABGResistanceThreshold[TR104_LINETEST_PORTS];
TR104_API extern int32_t gABResistanceThreshold[TR104_LINETEST_PORTS];
TR104_API extern int32_t gRingerEquivalenceMin[TR104_LINETEST_PORTS];
TR104_API extern int32_t gRingerEquivalenceMax[TR104_LINETEST_PORTS];
TR104_API extern int32_t gDBDT1[TR104_LINETEST_PORTS];
TR104_API extern int32_t gDBDT2[TR104_LINETEST_PORTS];
TR104_API extern int32_t gDBDT3[TR104_LINETEST_PORTS];
TR104_API extern int32_t gDBDT4[TR104_LINETEST_PORTS];
TR104_API extern int32_t gDialToneFrequency1[TR104_LINETEST_PORTS];
TR104_API extern int32_t gDialToneFrequency2[TR104_LINETEST_PORTS];
TR104_API extern int32_t gDialToneFrequency3[TR104_LINETEST_PORTS];
TR104_API extern int32_t gDialTonePowerThreshold[TR104_LINETEST_PORTS];
TR104_API extern int32_t gQuietChannelPowerThreshold[TR104_LINETEST_PORTS];

/* Simulated-call state of the library, one entry per port */
TR104_API extern int32_t gSmultTestType[TR104_LINETEST_PORTS];
TR104_API extern char gSmultCalledNum[TR104_LINETEST_PORTS][TR104_LINETEST_TEXT_LEN];
TR104_API extern int32_t gSmultTimeout[TR104_LINETEST_PORTS];
TR104_API extern const char aCallerFailReason[5][32];
TR104_API extern const char aCalledFailReason[3][32];

/* ---- Physical interface ------------------------------------------------------------------- */
TR104_API int Tr104PhysicalInterfacePort(int nFlag, void *pValue, int *nLocate); /* text */
TR104_API int Tr104PhysicalInterfaceID(int nFlag, void *pValue, int *nLocate); /* int */
/* Dial mode "First", "DTMF" or "Pulse": one body whatever the protocol (see the source). */
TR104_API int Tr104PhysicalInterfaceDialMode(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceDialModeH248(int nFlag, void *pValue, int *nLocate);
/* The draw time and the reverse pole are reached through their dispatching wrappers
 * (handlers.h); their SIP variants belong to the SIP handlers. */
TR104_API int Tr104PhysicalInterfaceTestDialToneDrawTimeH248(int nFlag, void *pValue, int *nLocate); /* float s */
TR104_API int Tr104PhysicalInterfaceTestDialToneBreakTime(int nFlag, void *pValue, int *nLocate); /* float 0 */
TR104_API int Tr104PhysicalInterfaceReversePoleH248(int nFlag, void *pValue, int *nLocate); /* int 0/1 */
/* "16Kc", "12Kc" or "disable"; nLocate[1] 0..2 (0 is passed to the voice module as it is). */
TR104_API int Tr104PhysicalInterfaceKcType(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceClipWhen(int nFlag, void *pValue); /* "AfterRing"/"BeforeRing" */
TR104_API int Tr104PhysicalInterfaceClipReversePole(int nFlag, void *pValue); /* int 0/1 */
TR104_API int Tr104PhysicalInterfaceMWIRingFlag(int nFlag, void *pValue); /* int, always 0 */
TR104_API int Tr104PhysicalInterfaceFlashUpTime(int nFlag, void *pValue); /* int ms 200..2500 */
TR104_API int Tr104PhysicalInterfaceFlashDownTime(int nFlag, void *pValue); /* int ms 1..2500 */

/* ---- Line test ---------------------------------------------------------------------------- */
TR104_API int Tr104PhysicalInterfaceTestSelector(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestState(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceIsTestOnBusy(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestIsDeviceBusy(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceAllTests(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestHazardousPotential(int nFlag, void *pValue, int *nLocate);
/* Block the calling thread 30 s and 40 s before answering 0. */
TR104_API int Tr104PhysicalInterfaceTestEnd(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceAllTestsEnd(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestConclusion(int nFlag, void *pValue, int *nLocate);

/* Thresholds (int, stored per port) */
TR104_API int Tr104PhysicalInterfaceTestVDCHazardousThreshold(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestVACHazardousThreshold(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestVDCForeignThreshold(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestVACForeignThreshold(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestABGResistanceThreshold(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestABResistanceThreshold(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestRingerEquivalenceMin(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestRingerEquivalenceMax(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestDBDT1(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestDBDT2(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestDBDT3(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestDBDT4(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceDialToneFrequency1(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceDialToneFrequency2(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceDialToneFrequency3(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestDialTonePowerThreshold(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestQuietChannelPowerThreshold(int nFlag, void *pValue, int *nLocate);

/* Outer-line measurements (int, get only) */
TR104_API int Tr104PhysicalInterfaceTestAGDCVoltage(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestBGDCVoltage(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestABDCVoltage(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestAGInsulationResistance(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestBGInsulationResistance(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestABInsulationResistance(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestABPolarityReversalResistance(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestAGCapacitance(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestBGCapacitance(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestABCapacitance(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestAGACVoltage(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestBGACVoltage(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestABACVoltage(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestABLoopResistance(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestRingerEquivalence(int nFlag, void *pValue, int *nLocate);
/* The voltage texts as the voice module wrote them (16 bytes) */
TR104_API int Tr104PhysicalInterfaceTestAGACVoltage2(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestBGACVoltage2(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestABACVoltage2(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestAGDCVoltage2(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestBGDCVoltage2(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestABDCVoltage2(int nFlag, void *pValue, int *nLocate);

/* Inner-line measurements (get only) */
TR104_API int Tr104PhysicalInterfaceTestLoopCurrent(int nFlag, void *pValue, int *nLocate); /* int */
TR104_API int Tr104PhysicalInterfaceTestFeederVoltage(int nFlag, void *pValue, int *nLocate); /* int */
TR104_API int Tr104PhysicalInterfaceTestSignalToneVolume(int nFlag, void *pValue, int *nLocate); /* float */
TR104_API int Tr104PhysicalInterfaceTestSignalToneFrequency(int nFlag, void *pValue, int *nLocate); /* int */
TR104_API int Tr104PhysicalInterfaceTestRingingCurrentVoltage(int nFlag, void *pValue, int *nLocate); /* int */
TR104_API int Tr104PhysicalInterfaceTestQuietChannelPower(int nFlag, void *pValue, int *nLocate); /* float */
TR104_API int Tr104PhysicalInterfaceTestSignalToneState(int nFlag, void *pValue, int *nLocate); /* int 0/1 */
TR104_API int Tr104PhysicalInterfaceTestFeederVoltageState(int nFlag, void *pValue, int *nLocate); /* int 0/1 */
TR104_API int Tr104PhysicalInterfaceTestLoopCurrentState(int nFlag, void *pValue, int *nLocate); /* int 0/1 */

/* Flag words (int, six bits, 63 = all within limits) */
TR104_API int Tr104PhysicalInterfaceTestVACFlags(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestVDCFlags(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestABGResistanceFlags(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestABResistanceFlags(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestRingerLoadFlags(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestDialTonePowerFlags(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestForeignEMF(int nFlag, void *pValue, int *nLocate); /* int, 1 */
TR104_API int Tr104PhysicalInterfaceTestDcSignature(int nFlag, void *pValue, int *nLocate); /* int, 1 */

/* ---- Simulated call ----------------------------------------------------------------------- */
TR104_API int Tr104SmultTestType(int nFlag, void *pValue, int *nLocate); /* "Called"/"Caller"/"None" */
TR104_API int Tr104SmultCalledNum(int nFlag, void *pValue, int *nLocate); /* text, 32 */
TR104_API int Tr104SmultTimeout(int nFlag, void *pValue, int *nLocate); /* int */
TR104_API int Tr104SmultStatus(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SmultConclusion(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SmultCallerFailReason(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SmultCalledFailReason(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SmultFailedRspCode(int nFlag, void *pValue, int *nLocate); /* int */
TR104_API int Tr104SmultDialConfirmEnable(int nFlag, void *pValue, int *nLocate); /* int */
TR104_API int Tr104SmultDialConfirmNum(int nFlag, void *pValue, int *nLocate); /* one character */
TR104_API int Tr104SmultDialConfirmResult(int nFlag, void *pValue, int *nLocate); /* "Success"/"Fail" */
/* Starts the port's simulated call: 0, -1 or -2. */
TR104_API int setSmultParam(int nPortNum);
/* Queries a simulated call: pSultParam zeroed by the caller, port at offset 8.  0, -1 or -2. */
TR104_API int getSmultParam(Tr104SmultParam *pSultParam);

TR104_EXTERN_C_END

#endif
