// The grouped parameters of one Set message, applied when the agent commits its transaction.
//
// A set of a grouped parameter (a proxy and its port, a line's user name and password) stages
// its value in the deferred buffer, whose slot timer would write the group 5 s later.  A Set
// message is the whole group a controller means: at its commit the groups it touched are written
// now, an incomplete one completed from the voice module's current values as the timer would;
// at its abort what it staged is dropped.  One slot serves every instance of its group (both
// lines' credentials): values of another instance staged by the same message are written before
// a set replaces them.
#pragma once

#include <string>
#include <vector>

namespace tr104usp {

class SetTransaction {
public:
    void start();
    // A set by the map's path, as tr104MapSet (its result, error filled on a failure); -1 with
    // error naming the slot when another instance's staged group could not be written first.
    // Outside a transaction the set's group is written at once.
    int set(const std::string &path, const char *value, char *error, unsigned errorLen);
    // 0, or -1 with error naming the slot whose group could not be written.
    int commit(char *error, unsigned errorLen);
    // The slots whose staged values were dropped.
    std::vector<int> abort();

private:
    struct Staged {
        std::string path;
        int slot;
        int locate[4];
    };
    template <typename Which>
    int apply(Which which, char *error, unsigned errorLen);

    std::vector<Staged> staged_;
    bool open_ = false;
};

}  // namespace tr104usp
