// For main() alone.
#ifndef ZELSENSORS_TESTS_SANDBOXENTRY_H
#define ZELSENSORS_TESTS_SANDBOXENTRY_H

namespace sandbox {

// Makes the private namespace. Call once, before the first thread; failure shows in whyUnavailable().
void enter();

}  // namespace sandbox

#endif
