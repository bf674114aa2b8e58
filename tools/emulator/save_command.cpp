// The save of the voice module's configuration (sent by Tr104VoiceCfgSave, which does not wait
// for an answer): the voice module keeps its configuration and does not answer.  tr104-vmemu
// writes its state file when it sees the command.
#include "emulator/state_file.h"

namespace vmemu {
namespace {

void registerSaveCommand(VoiceModuleEmulator &emulator) {
    emulator.nameCommand(kSaveVoiceCfgCmd, "SAVE_VOICE_CFG");
    emulator.setHandler(kSaveVoiceCfgCmd, [](const Request &, Payload &) { return false; });
}

const FamilyRegistrar saveCommand(&registerSaveCommand);

}  // namespace
}  // namespace vmemu
