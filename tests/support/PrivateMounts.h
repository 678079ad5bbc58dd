// Mounts that nobody else sees.
#ifndef ZELSENSORS_TESTS_PRIVATEMOUNTS_H
#define ZELSENSORS_TESTS_PRIVATEMOUNTS_H

#include <sys/types.h>

// From now on what this process and its children mount and unmount reaches no other process, nor do others' mounts
// reach it. Also in a chroot whose "/" is no mount. Where that takes a user namespace, the caller is `user` and `group`
// in it. Call it before the first thread. Throws std::system_error where the system forbids it.
void enterPrivateMounts(uid_t user, gid_t group);

#endif
