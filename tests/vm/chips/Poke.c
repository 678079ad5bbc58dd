/* Writes bytes past every driver:
 *
 *     poke memory ADDRESS BYTE...   where physical memory that the kernel leaves alone is
 *     poke cmos INDEX BYTE...       into the clock's battery-backed memory
 *
 * All numbers are as strtoul takes them. */
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/io.h>
#include <sys/mman.h>
#include <unistd.h>

static unsigned char byteOf(const char* text) {
    return (unsigned char)strtoul(text, NULL, 0);
}

/* Without O_SYNC: the kernel has this memory cached, and refuses any other kind of mapping. */
static int pokeMemory(unsigned long address, int count, char** bytes) {
    const unsigned long page = (unsigned long)sysconf(_SC_PAGESIZE);
    const int memory = open("/dev/mem", O_RDWR);
    unsigned char* mapped =
        mmap(NULL, 2 * page, PROT_READ | PROT_WRITE, MAP_SHARED, memory, (off_t)(address & ~(page - 1)));
    if (memory < 0 || mapped == MAP_FAILED) return EXIT_FAILURE;
    for (int i = 0; i < count; ++i) mapped[(address & (page - 1)) + (unsigned long)i] = byteOf(bytes[i]);
    return EXIT_SUCCESS;
}

static int pokeCmos(unsigned long index, int count, char** bytes) {
    const unsigned short indexPort = 0x70;
    const unsigned short dataPort = 0x71;
    if (ioperm(indexPort, 2, 1) != 0) return EXIT_FAILURE;
    for (int i = 0; i < count; ++i) {
        outb((unsigned char)(index + (unsigned long)i), indexPort);
        outb(byteOf(bytes[i]), dataPort);
    }
    return EXIT_SUCCESS;
}

int main(int count, char** arguments) {
    if (count < 3) return EXIT_FAILURE;
    const unsigned long place = strtoul(arguments[2], NULL, 0);
    if (strcmp(arguments[1], "memory") == 0) return pokeMemory(place, count - 3, arguments + 3);
    if (strcmp(arguments[1], "cmos") == 0) return pokeCmos(place, count - 3, arguments + 3);
    return EXIT_FAILURE;
}
