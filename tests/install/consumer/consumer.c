/* An integrator's program, built against an installed libtr104 (CMake package or pkg-config):
 * resolves a data-model path through the map, opens the channel and reads the value from
 * whatever voice module serves this machine's queues, then has the configuration saved.  Exit 0
 * when the line's state came back. */
#include <stdio.h>
#include <string.h>

#include "tr104.h"
#include "tr104/map.h"
#include "tr104/version.h"

int main(int argc, char **argv) {
    const char *path =
        argc > 1 ? argv[1] : "InternetGatewayDevice.Services.VoiceService.1.VoiceProfile.1.Line.1.Enable";
    const Tr104MapEntry *entry = NULL;
    int nLocate[4] = {0, 0, 0, 0};
    char error[160] = "";
    if (tr104MapLookup(path, &entry, nLocate, error, sizeof(error)) != TR104_MAP_SERVED || entry->arity != 3) {
        fprintf(stderr, "consumer: %s: not a served line parameter %s\n", path, error);
        return 1;
    }
    /* The channel as module kind 1, and the protocol the voice module runs (the line handlers
     * serve the SIP or the H.248 record by it). */
    if (tr104VoiceMsgQueuesInit(1) != 0 || Tr104RefreshCurrProtocolType() != 0) {
        fprintf(stderr, "consumer: no channel\n");
        return 1;
    }
    char value[64] = "";
    int (*handler)(int, void *, int *) = (int (*)(int, void *, int *))entry->fn;
    const int rc = handler(0, value, nLocate);
    /* As an agent does after a change: the voice module keeps its configuration. */
    const int saved = Tr104VoiceCfgSave();
    printf("\nconsumer (libtr104 %s): %s -> %s = \"%s\" (rc %d), save %d\n", TR104_VERSION_STRING, path, entry->handler,
           value, rc, saved);
    return rc == 0 && value[0] != '\0' && saved == 0 ? 0 : 1;
}
