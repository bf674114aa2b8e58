#include "emulator/write_all.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace vmemu {

bool writeAll(int fd, const std::string &data, Descriptor kind) {
    size_t done = 0;
    while (done < data.size()) {
        const char *from = data.data() + done;
        const size_t left = data.size() - done;
        const ssize_t n = kind == Descriptor::Socket ? ::send(fd, from, left, MSG_NOSIGNAL) : ::write(fd, from, left);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return false;
        }
        done += static_cast<size_t>(n);
    }
    return true;
}

}  // namespace vmemu
