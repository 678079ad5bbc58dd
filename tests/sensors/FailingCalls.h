// Failures of the C library that no file system can be made to show: this program's own `glob` and `fcntl` stand before
// the C library's and pass everything on until they are told to fail. For use in a process of its own.
#ifndef ZELSENSORS_TESTS_FAILINGCALLS_H
#define ZELSENSORS_TESTS_FAILINGCALLS_H

#include <optional>

namespace failing {

void globAnswers(int code);      // every glob() from now on; what it has found stands all the same
void setfdFailsWith(int error);  // every fcntl(F_SETFD) from now on
// The flags of the last fcntl(F_SETFD), if there was one.
std::optional<int> lastSetfdFlags();

// While it lives, this process may open only what its user's file modes allow, as if it were not root.
class WithoutRootsRights {
  public:
    WithoutRootsRights();
    ~WithoutRootsRights();
    WithoutRootsRights(const WithoutRootsRights&) = delete;
    WithoutRootsRights& operator=(const WithoutRootsRights&) = delete;

  private:
    unsigned m_effective[2];
};

}  // namespace failing

#endif
