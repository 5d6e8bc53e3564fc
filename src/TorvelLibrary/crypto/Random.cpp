#include "TorvelLibrary/crypto/Random.h"

#include "TorvelLibrary/crypto/RandomSource.h"
#include "TorvelPlatform/foundation/FatalError.h"

#include <limits>
#include <string>

namespace torvel {

std::int64_t Random::generate(std::int64_t upperBound) {
    if (upperBound < 0 || upperBound > std::numeric_limits<std::uint32_t>::max())
        fatalError("Random: no upper bound of " + std::to_string(upperBound));
    return RandomSource::ofThisThread().below(static_cast<std::uint32_t>(upperBound));
}

}  // namespace torvel
