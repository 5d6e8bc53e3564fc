#pragma once

#include "TorvelLibrary/preflight/Preflight.h"

#include <string>
#include <vector>

namespace torvel::cli {

// What was found, for a person or a build pipeline.
class DoctorReport {
  public:
    explicit DoctorReport(std::vector<PreflightSubject> subjects) : m_subjects(std::move(subjects)) {}

    std::size_t count(PreflightSeverity severity) const;
    // One line a subject, its findings below it, and a line that sums up.
    std::string text(bool coloured) const;
    // As docs/doctor.md describes it.
    std::string json(const std::string& bundle) const;

  private:
    std::vector<PreflightSubject> m_subjects;
};

}  // namespace torvel::cli
