#pragma once  // internal

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>

namespace torvel {

// Random numbers of cryptographic quality, buffered for one thread: AES-256 in counter mode, seeded by the
// kernel. Every refill replaces the key and every draw erases its bytes, so that what was drawn cannot be
// found again. A forked child starts from a seed of its own: the kernel wipes the page in it.
class RandomSource {
  public:
    // The calling thread's own.
    static RandomSource& ofThisThread();

    // Exactly uniform in 0 ..< bound; 0 when the bound is 0.
    std::uint32_t below(std::uint32_t bound) {
        // Lemire, "Fast random integer generation in an interval" (2019).
        std::uint64_t product = std::uint64_t{next()} * bound;
        if (static_cast<std::uint32_t>(product) < bound) {
            const std::uint32_t surplus = -bound % bound;  // 2^32 modulo bound
            while (static_cast<std::uint32_t>(product) < surplus) product = std::uint64_t{next()} * bound;
        }
        return static_cast<std::uint32_t>(product >> 32);
    }

    // The same for many small numbers at once. `bound` is not 0.
    using Batch = std::array<std::uint16_t, 16>;
    Batch batchBelow(std::uint16_t bound) {
        Batch values;
        while (!scale(nextBatch(), bound, values)) continue;
        return values;
    }

    RandomSource(const RandomSource&) = delete;
    RandomSource& operator=(const RandomSource&) = delete;

  private:
    // Lives in a page of its own. All zeros, as in a forked child, mean that it is not seeded.
    struct State {
        std::uint8_t key[32];
        std::uint32_t words[960];
        std::uint32_t unused;  // words not drawn yet, the first ones
    };
    struct Unmap {
        void operator()(State* state) const;
    };

    RandomSource();
    void refill();
    void forget();

    std::uint32_t next() {
        if (m_state->unused == 0) refill();
        std::uint32_t& word = m_state->words[--m_state->unused];
        const std::uint32_t drawn = word;
        word = 0;
        return drawn;
    }

    Batch nextBatch() {
        constexpr std::uint32_t needed = sizeof(Batch) / sizeof(std::uint32_t);
        if (m_state->unused < needed) refill();
        m_state->unused -= needed;
        std::uint32_t* const words = m_state->words + m_state->unused;
        Batch drawn;
        std::memcpy(drawn.data(), words, sizeof drawn);
        std::memset(words, 0, sizeof drawn);
        return drawn;
    }

    // The same for all at once; false when one of them must be drawn again, which all then are. Two loops of
    // 16-bit numbers without branches, which compilers make vectors of.
    static bool scale(const Batch& drawn, std::uint16_t bound, Batch& values) {
        const auto surplus = static_cast<std::uint16_t>(0x10000U % bound);
        std::uint16_t missing = 0;
        for (std::size_t i = 0; i < drawn.size(); ++i)
            values[i] = static_cast<std::uint16_t>(std::uint32_t{drawn[i]} * bound >> 16);
        for (std::size_t i = 0; i < drawn.size(); ++i) {
            const auto low = static_cast<std::uint16_t>(drawn[i] * bound);
            missing |= static_cast<std::uint16_t>(low < surplus ? surplus - low : 0);
        }
        return missing == 0;
    }

    std::unique_ptr<State, Unmap> m_state;
    bool m_wipedOnFork = false;
};

}  // namespace torvel
