// For logging where nothing may be thrown: entry points, destructors, handlers of other exceptions.
#ifndef ZELSENSORS_LOG_QUIETLY_H
#define ZELSENSORS_LOG_QUIETLY_H

// Calls `action` and lets nothing that it throws out.
template <typename Action>
void quietly(Action&& action) noexcept {
    try {
        action();
    } catch (...) {  // losing it is the purpose
    }
}

#endif
