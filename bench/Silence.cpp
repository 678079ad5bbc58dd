#include "Silence.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "Sandbox.h"
#include "SandboxEntry.h"

namespace {

void redirect(const char* path, int descriptor) {
    const int opened = open(path, O_WRONLY | O_CLOEXEC);
    dup2(opened, descriptor);
    close(opened);
}

void enterPrivateDirectories() {
    sandbox::enter();
    if (!sandbox::whyUnavailable().empty()) {
        std::fprintf(stderr, "%s\n", sandbox::whyUnavailable().c_str());
        std::exit(1);
    }
    sandbox::writeLogConfiguration("MaxLength=-1\n");
}

}  // namespace

Silence::Silence()
    : m_output(dup(STDOUT_FILENO), std::ios::out),
      m_errors(dup(STDERR_FILENO), std::ios::out),
      output(&m_output),
      errors(&m_errors) {
    enterPrivateDirectories();
    redirect("/dev/null", STDOUT_FILENO);
    redirect("/dev/null", STDERR_FILENO);
}
