#include "RefusedCall.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <future>
#include <thread>

namespace {

// The kernel asks about each such call of this thread at the descriptor that is given; -1 where that cannot be had.
int askAbout(int systemCall) {
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(systemCall), 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{sizeof program / sizeof program[0], program};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return -1;
    return static_cast<int>(syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &filter));
}

// Answers until the thread has ended. Whether there was an n-th call.
bool answer(int listener, unsigned nth, int error) {
    unsigned calls = 0;
    for (;;) {
        pollfd waiting{listener, POLLIN, 0};
        if (poll(&waiting, 1, -1) < 0) continue;
        if ((waiting.revents & POLLIN) == 0) return calls >= nth;
        seccomp_notif question{};
        if (ioctl(listener, SECCOMP_IOCTL_NOTIF_RECV, &question) != 0) continue;
        seccomp_notif_resp response{};
        response.id = question.id;
        if (++calls == nth)
            response.error = -error;
        else
            response.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
        ioctl(listener, SECCOMP_IOCTL_NOTIF_SEND, &response);
    }
}

}  // namespace

Refusal refuseCall(int systemCall, unsigned nth, int error, const std::function<void()>& action) {
    Refusal refusal;
    std::promise<int> asked;
    std::thread refused([&] {
        const int listener = askAbout(systemCall);
        if (listener < 0) refusal.whyImpossible = std::string("no answering of system calls: ") + std::strerror(errno);
        asked.set_value(listener);
        if (listener >= 0) action();
    });
    const int listener = asked.get_future().get();
    if (listener >= 0) refusal.hasCome = answer(listener, nth, error);
    refused.join();
    if (listener >= 0) close(listener);
    return refusal;
}
