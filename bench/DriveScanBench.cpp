// The discovery of ten drives that answer at once, against the system calls that it is made of.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <glob.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

#include "AnsweringDrives.h"
#include "NvmeAdmin.h"
#include "NvmeSsd.h"

static void driveScan(benchmark::State& state) {
    makeDrives(10);
    for (auto _ : state) {
        NvmeSsd drives;
        if (!drives.scanNVMeDevices()) throw std::runtime_error("no drive was found");
        benchmark::DoNotOptimize(drives);
    }
}
BENCHMARK(driveScan)->Name("driveScan/provider/10");

static void driveScanFloor(benchmark::State& state) {
    makeDrives(10);
    for (auto _ : state) {
        glob_t found{};
        glob("/dev/nvme[0-9]", GLOB_ERR, nullptr, &found);
        for (std::size_t i = 0; i < found.gl_pathc; ++i) {
            const int drive = open(found.gl_pathv[i], O_RDONLY | O_NONBLOCK);
            fcntl(drive, F_SETFD, FD_CLOEXEC);
            ioctl(drive, NVME_IOCTL_ID);
            for (int command = 0; command < 4; ++command) {
                nvme_admin_cmd sent{};
                ioctl(drive, NVME_IOCTL_ADMIN_CMD, &sent);
            }
            close(drive);
        }
        globfree(&found);
    }
}
BENCHMARK(driveScanFloor)->Name("driveScan/floor/10");
