#include "support/fresh_run.h"

#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/run.h"
#include "traffic/traffic.h"

#include <algorithm>
#include <stdexcept>

namespace vlt {

void gf_freshRun()
{
    const auto restore = [](auto* p) { p->value = p->def; };
    std::ranges::for_each(gf_parameters<bool>(), restore);
    std::ranges::for_each(gf_parameters<int32_t>(), restore);
    std::ranges::for_each(gf_parameters<float>(), restore);
    std::ranges::for_each(gf_parameters<std::string>(), restore);
    gf_applyLateralRange();
    closeRequested = false;
    if (!gf_resetRun()) {
        throw std::logic_error("no run can be begun");
    }
    tick = 100'000;
}

}  // namespace vlt
