// Runs the same work on several threads.
#ifndef ZELSENSORS_TESTS_ONTHREADS_H
#define ZELSENSORS_TESTS_ONTHREADS_H

#include <functional>
#include <thread>
#include <vector>

// Calls `work` on that many threads, with the number of each from 0, and waits for all of them.
inline void onThreads(unsigned count, const std::function<void(unsigned)>& work) {
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < count; ++i) threads.emplace_back(work, i);
    for (std::thread& thread : threads) thread.join();
}

#endif
