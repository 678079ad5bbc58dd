// Threads and their tools, by way of POSIX. These functions are given no broker, so calls of them are neither recorded
// nor made to fail.
#include <pthread.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <memory>

#include "broker/Tables.h"

namespace broker {
namespace {

static_assert(sizeof(pthread_t) == sizeof(void*), "CMPI holds a thread in a pointer");

// Where libraries lie is not this broker's to say.
char* resolveFileName(const char*) {
    return nullptr;
}

void* newThread(void* (*start)(void*), void* argument, int isDetached) {
    pthread_t thread{};
    if (pthread_create(&thread, nullptr, start, argument) != 0) return nullptr;
    if (isDetached != 0) pthread_detach(thread);
    void* handle = nullptr;
    std::memcpy(&handle, &thread, sizeof handle);
    return handle;
}

pthread_t threadOf(void* handle) {
    pthread_t thread{};
    std::memcpy(&thread, &handle, sizeof thread);
    return thread;
}

int joinThread(void* handle, void** result) {
    return pthread_join(threadOf(handle), result);
}
int exitThread(void* result) {
    pthread_exit(result);
}
int cancelThread(void* handle) {
    return pthread_cancel(threadOf(handle));
}

int threadSleep(CMPIUint32 milliseconds) {
    timespec left{};
    left.tv_sec = milliseconds / 1000;
    left.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000;
    while (nanosleep(&left, &left) != 0) {
        if (errno != EINTR) return errno;
    }
    return 0;
}

int threadOnce(int* once, void (*init)()) {
    return pthread_once(once, init);
}

// The type of a thread's key differs between editions of <cmpios.h>; the templates suit all.
template <typename Key>
int createThreadKey(Key* key, void (*cleanup)(void*)) {
    pthread_key_t made{};
    const int error = pthread_key_create(&made, cleanup);
    *key = made;
    return error;
}
template <typename Key>
int destroyThreadKey(Key key) {
    return pthread_key_delete(static_cast<pthread_key_t>(key));
}
template <typename Key>
void* getThreadSpecific(Key key) {
    return pthread_getspecific(static_cast<pthread_key_t>(key));
}
template <typename Key>
int setThreadSpecific(Key key, void* value) {
    return pthread_setspecific(static_cast<pthread_key_t>(key), value);
}

void* newMutex(int) {
    auto mutex = std::make_unique<pthread_mutex_t>();
    return pthread_mutex_init(mutex.get(), nullptr) == 0 ? mutex.release() : nullptr;
}
void destroyMutex(void* mutex) {
    const std::unique_ptr<pthread_mutex_t> owned(static_cast<pthread_mutex_t*>(mutex));
    pthread_mutex_destroy(owned.get());
}
void lockMutex(void* mutex) {
    pthread_mutex_lock(static_cast<pthread_mutex_t*>(mutex));
}
void unlockMutex(void* mutex) {
    pthread_mutex_unlock(static_cast<pthread_mutex_t*>(mutex));
}

void* newCondition(int) {
    auto condition = std::make_unique<pthread_cond_t>();
    return pthread_cond_init(condition.get(), nullptr) == 0 ? condition.release() : nullptr;
}
void destroyCondition(void* condition) {
    const std::unique_ptr<pthread_cond_t> owned(static_cast<pthread_cond_t*>(condition));
    pthread_cond_destroy(owned.get());
}
int condWait(void* condition, void* mutex) {
    return pthread_cond_wait(static_cast<pthread_cond_t*>(condition), static_cast<pthread_mutex_t*>(mutex));
}
int timedCondWait(void* condition, void* mutex, timespec* until) {
    return pthread_cond_timedwait(static_cast<pthread_cond_t*>(condition), static_cast<pthread_mutex_t*>(mutex), until);
}
int signalCondition(void* condition) {
    return pthread_cond_signal(static_cast<pthread_cond_t*>(condition));
}

}  // namespace

void fillThreadTable(CMPIBrokerExtFT& table, const BrokerOptions& options) {
    table.ftVersion = options.tableVersion;
    table.resolveFileName = resolveFileName;
    table.newThread = newThread;
    table.joinThread = joinThread;
    table.exitThread = exitThread;
    table.cancelThread = cancelThread;
    table.threadSleep = threadSleep;
    table.threadOnce = threadOnce;
    table.createThreadKey = createThreadKey;
    table.destroyThreadKey = destroyThreadKey;
    table.getThreadSpecific = getThreadSpecific;
    table.setThreadSpecific = setThreadSpecific;
    table.newMutex = newMutex;
    table.destroyMutex = destroyMutex;
    table.lockMutex = lockMutex;
    table.unlockMutex = unlockMutex;
    table.newCondition = newCondition;
    table.destroyCondition = destroyCondition;
    table.condWait = condWait;
    table.timedCondWait = timedCondWait;
    table.signalCondition = signalCondition;
}

}  // namespace broker
