#pragma once

#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelTesting/CapturedLog.h"
#include "TorvelTesting/TemporaryHost.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <stdlib.h>

namespace torvel::testing {

// A temporary host as a fixture.
class HostFixture : public ::testing::Test, public TemporaryHost {
  protected:
    // What `work` writes to the log, without the dates.
    template <class Work>
    static std::string logOf(Work work) {
        const CapturedLog log;
        work();
        return log.text();
    }
};

}  // namespace torvel::testing
