#pragma once

#include "TorvelPlatform/foundation/Outcome.h"

namespace torvel {

// A success or a failure, for host applications' own use; the library neither makes nor takes one. A value;
// threads may share one that none changes.
template <class Success, class Failure>
class Result : public Outcome<Success, Failure> {
  public:
    // A result that holds the value or the error.
    static Result success(Success value) { return Result(std::move(value)); }
    static Result failure(Failure error) { return Result(std::move(error)); }

  private:
    using Outcome<Success, Failure>::Outcome;
};

}  // namespace torvel
