#pragma once

#include "TorvelPlatform/foundation/ScreenEnvironment.h"

namespace torvel::testing {

// A screen of a given width for as long as it lives: what dp() and the font catalogue scale to. Needs no
// screen toolkit; one that is running sets the width again when its screen changes.
class FixedScreen {
  public:
    explicit FixedScreen(double widthInPoints) : m_before(ScreenEnvironment::widthInPoints) {
        ScreenEnvironment::widthInPoints = widthInPoints;
    }
    ~FixedScreen() { ScreenEnvironment::widthInPoints = m_before; }
    FixedScreen(const FixedScreen&) = delete;
    FixedScreen& operator=(const FixedScreen&) = delete;

  private:
    double m_before;
};

}  // namespace torvel::testing
