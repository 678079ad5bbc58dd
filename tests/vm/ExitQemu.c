/* Ends the emulator from inside the guest: its isa-debug-exit device makes it exit with 2 * N + 1. */
#include <stdlib.h>
#include <sys/io.h>

int main(int count, char** arguments) {
    const unsigned short port = 0xf4;
    if (count != 2 || ioperm(port, 1, 1) != 0) return EXIT_FAILURE;
    outb((unsigned char)strtoul(arguments[1], NULL, 10), port);
    return EXIT_FAILURE;
}
