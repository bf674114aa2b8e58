// Functions the host process provides.  Both are weak: the library also loads in programs
// that have neither (tests, tools), and then skips the calls.
#pragma once

extern "C" {
// Board-support library: records a component's name, version and build date and time.
__attribute__((weak)) int ux_bsp_version_export(const char *name, const char *version, const char *date,
                                                const char *time);
// Management agent: reports changed parameter values (module, names, values, count).
__attribute__((weak)) int notifyChangedValues_toTr069(int module, char **names, char **values, int count);
}
