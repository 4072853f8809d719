// A place to match liveries in: a working folder with a log, the small world, and the parameters as they are
// by default.
#pragma once

#include "liveries/workplace.h"
#include "support/fresh_run.h"
#include "support/world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vlt {

class LiveryPlace : public testing::Test
{
protected:
    LiveryPlace()
    {
        gf_freshRun();
        gf_loadSmallWorld();
    }
    ~LiveryPlace() override
    {
        gf_clearWorld();
        gf_freshRun();
    }

    Workplace workplace;
};

}  // namespace vlt
