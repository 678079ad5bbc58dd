// For logging where nothing may be raised: entry points, destructors, handlers of other exceptions.
#ifndef ZELSENSORS_LOG_QUIETLY_H
#define ZELSENSORS_LOG_QUIETLY_H

// Calls `action` and lets nothing that it raises out.
template <class Action>
void quietly(Action&& action) noexcept {
    try {
        action();
    } catch (...) {  // losing it is the purpose
    }
}

#endif
