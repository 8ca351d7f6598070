#pragma once
// wait_ms as the rest of the program calls it: the wait itself belongs to the
// context's clock, which keeps events flowing in the program and moves by
// hand in tests.

#include "app_context.h"

namespace veltrako {

inline void wait_ms(AppContext& ctx, int ms) {
    ctx.clock.wait_ms(ms);
}

} // namespace veltrako
