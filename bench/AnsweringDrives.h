// NVMe drives that answer at once: this program's own `ioctl` takes the place of the C library's.
#ifndef ZELSENSORS_BENCH_ANSWERINGDRIVES_H
#define ZELSENSORS_BENCH_ANSWERINGDRIVES_H

// Makes /dev/nvme0 and so on, at most ten, in the private /dev. Each ioctl is passed to the kernel, which has no drive
// there and refuses at once; the drive's commands then succeed with empty data all the same. So the number and the kind
// of the system calls are those of a real drive.
void makeDrives(int count);

#endif
