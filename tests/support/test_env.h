// Process-wide set-up shared by every test binary.
#pragma once

namespace tr104test {

// Enters a private System V IPC namespace; aborts the process with a clear message when the
// kernel refuses (the tests need root or CAP_SYS_ADMIN for it).
void enterPrivateIpcNamespace();

}  // namespace tr104test
