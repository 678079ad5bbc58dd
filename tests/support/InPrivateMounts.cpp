// Runs a command whose mounts nobody else sees, as root, be it the machine's or a user namespace's.
//
//     in_private_mounts COMMAND [ARGUMENT...]
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "PrivateMounts.h"

int main(int count, char** arguments) {
    if (count < 2) {
        std::fprintf(stderr, "usage: in_private_mounts COMMAND [ARGUMENT...]\n");
        return EXIT_FAILURE;
    }
    try {
        enterPrivateMounts(0, 0);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "in_private_mounts: %s\n", error.what());
        return EXIT_FAILURE;
    }
    execvp(arguments[1], arguments + 1);
    std::perror(arguments[1]);
    return EXIT_FAILURE;
}
