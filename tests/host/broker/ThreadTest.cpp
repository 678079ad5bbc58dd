#include <atomic>
#include <ctime>
#include <thread>

#include "BrokerFixture.h"

using ThreadTest = BrokerTest;

TEST_F(ThreadTest, AttachedThreadOwnsItsObjectsUntilItDetaches) {
    CMPIContext* context = mb->bft->prepareAttachThread(mb, request.context());
    ASSERT_NE(nullptr, context);
    std::thread([&] {
        EXPECT_EQ(CMPI_RC_OK, mb->bft->attachThread(mb, context).rc);
        EXPECT_EQ("root/cimv2", textOf(context->ft->getEntry(context, CMPIInitNameSpace, nullptr).value.string));
        newString("of the thread");
        EXPECT_EQ(3U, broker.liveObjects());  // with the context and the string of its entry
        EXPECT_EQ(CMPI_RC_OK, mb->bft->detachThread(mb, context).rc);
    }).join();
    EXPECT_EQ(0U, broker.liveObjects());
}

TEST_F(ThreadTest, OnlyPreparedContextsAttach) {
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, mb->bft->attachThread(mb, request.context()).rc);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, mb->bft->detachThread(mb, request.context()).rc);
    EXPECT_EQ(nullptr, mb->bft->prepareAttachThread(mb, nullptr));
    CMPIContext* context = mb->bft->prepareAttachThread(mb, request.context());
    EXPECT_EQ(CMPI_RC_OK, mb->bft->attachThread(mb, context).rc);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, mb->bft->attachThread(mb, context).rc);
    EXPECT_EQ(CMPI_RC_OK, mb->bft->detachThread(mb, context).rc);
}

TEST_F(ThreadTest, ThreadThatNeverDetachesCountsAsLeftOver) {
    EXPECT_NE(nullptr, mb->bft->prepareAttachThread(mb, request.context()));
    EXPECT_EQ(1U, broker.liveObjects());
}

TEST(ThreadsTest, RequestsRunSideBySide) {
    broker::Broker shared;
    const CMPIBroker* mb = shared.handle();
    std::vector<std::thread> threads;
    for (unsigned thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&shared, mb, thread] {
            for (unsigned round = 0; round < 50; ++round) {
                const broker::Request request(shared);
                CMPIObjectPath* path = mb->eft->newObjectPath(mb, "root/cimv2", "Test_Class", nullptr);
                const CMPIValue number = uint32Value(thread);
                path->ft->addKey(path, "Thread", &number, CMPI_uint32);
                CMPIObjectPath* clone = path->ft->clone(path, nullptr);
                request.result()->ft->returnObjectPath(request.result(), clone);
                clone->ft->release(clone);
                ASSERT_EQ(1U, request.reply().paths.size());
                ASSERT_EQ(thread, request.reply().paths[0].findKey("thread")->unsignedNumber);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0U, shared.liveObjects());
    EXPECT_EQ(0U, shared.liveClones());
}

namespace {

// What the broker's thread functions are tried with.
struct Meeting {
    const CMPIBrokerExtFT* functions;
    void* mutex;
    void* condition;
    bool isReached = false;
};

void* reach(void* argument) {
    auto* meeting = static_cast<Meeting*>(argument);
    meeting->functions->lockMutex(meeting->mutex);
    meeting->isReached = true;
    meeting->functions->signalCondition(meeting->condition);
    meeting->functions->unlockMutex(meeting->mutex);
    return argument;
}

void* exitWithArgument(void* argument) {
    static_cast<const Meeting*>(argument)->functions->exitThread(argument);
    return nullptr;
}

int s_initCalls = 0;
void countInit() {
    ++s_initCalls;
}

}  // namespace

TEST_F(ThreadTest, ThreadsMeetByMutexAndCondition) {
    const CMPIBrokerExtFT* xft = mb->xft;
    Meeting meeting{xft, xft->newMutex(0), xft->newCondition(0)};
    void* thread = xft->newThread(reach, &meeting, 0);
    xft->lockMutex(meeting.mutex);
    while (!meeting.isReached) EXPECT_EQ(0, xft->condWait(meeting.condition, meeting.mutex));
    xft->unlockMutex(meeting.mutex);
    void* result = nullptr;
    EXPECT_EQ(0, xft->joinThread(thread, &result));
    EXPECT_EQ(&meeting, result);
    thread = xft->newThread(exitWithArgument, &meeting, 0);
    result = nullptr;
    EXPECT_EQ(0, xft->joinThread(thread, &result));
    EXPECT_EQ(&meeting, result);
    xft->destroyCondition(meeting.condition);
    xft->destroyMutex(meeting.mutex);
}

TEST_F(ThreadTest, TimedWaitEnds) {
    void* mutex = mb->xft->newMutex(0);
    void* condition = mb->xft->newCondition(0);
    timespec past{1, 0};
    mb->xft->lockMutex(mutex);
    EXPECT_EQ(ETIMEDOUT, mb->xft->timedCondWait(condition, mutex, &past));
    mb->xft->unlockMutex(mutex);
    mb->xft->destroyCondition(condition);
    mb->xft->destroyMutex(mutex);
}

TEST_F(ThreadTest, SleepLastsAsLongAsAsked) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(0, mb->xft->threadSleep(5));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(5));
}

TEST_F(ThreadTest, KeysHoldAValuePerThread) {
    const CMPIBrokerExtFT* xft = mb->xft;
    CMPI_THREAD_KEY_TYPE key{};
    ASSERT_EQ(0, xft->createThreadKey(&key, nullptr));
    int value = 0;
    EXPECT_EQ(0, xft->setThreadSpecific(key, &value));
    EXPECT_EQ(&value, xft->getThreadSpecific(key));
    std::thread([&] { EXPECT_EQ(nullptr, xft->getThreadSpecific(key)); }).join();
    EXPECT_EQ(0, xft->destroyThreadKey(key));
}

TEST_F(ThreadTest, OnceIsOnce) {
    int once = 0;
    s_initCalls = 0;
    mb->xft->threadOnce(&once, countInit);
    mb->xft->threadOnce(&once, countInit);
    EXPECT_EQ(1, s_initCalls);
}

TEST_F(ThreadTest, FileNamesAreNotResolved) {
    EXPECT_EQ(nullptr, mb->xft->resolveFileName("library"));
}
