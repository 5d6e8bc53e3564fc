#pragma once

#include "cli/DemoHost.h"

#include <string>
#include <string_view>

namespace torvel::cli {

// What the demonstration prints, on standard output: numbered steps, the facts of each in aligned lines, a
// verdict that comes from checks. In colour on a terminal, unless NO_COLOR is set (no-color.org).
class DemoReport {
  public:
    DemoReport();

    void heading(std::string_view text) const;
    void beginStep(std::string_view title);
    void fact(std::string_view label, std::string_view text) const;
    // The members of a JSON text, one a line, long ones cut.
    void members(std::string_view label, const std::string& json) const;

    // A step is ok when everything expected of it held. What did not is said in the verdict.
    void expect(bool held, std::string_view what);
    void endStep(const Seen& seen);

    // The closing line; true when every step was ok.
    bool finish() const;

  private:
    std::string coloured(const char* code, std::string_view text) const;

    bool m_colour;
    int m_steps = 0;
    int m_good = 0;
    std::string m_fault;  // of the current step
};

}  // namespace torvel::cli
