// A mode word for the time of a call.
#pragma once

#include "vm/control/thread_state.h"

namespace kef::vm {

// Keeps the thread's mode word and puts it back bit for bit: SetMode could not restore a field that
// was zero.
class ModeScope {
public:
    explicit ModeScope(std::uint32_t requested)
        : state_(state_with_mode()), mode_(state_.mode), zero_mode_(state_.zero_mode) {
        state_.mode = merged_mode(mode_, requested);
        state_.zero_mode = false;
    }
    ~ModeScope() {
        state_.mode = mode_;
        state_.zero_mode = zero_mode_;
    }
    ModeScope(const ModeScope&) = delete;
    ModeScope& operator=(const ModeScope&) = delete;

protected:
    ThreadState& state_;

private:
    std::uint32_t mode_;
    bool zero_mode_;
};

}  // namespace kef::vm
