#pragma once  // internal

#include <cstdint>
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

    RandomSource(const RandomSource&) = delete;
    RandomSource& operator=(const RandomSource&) = delete;

  private:
    // Fills one page together with nothing else. All zeros, as in a forked child, mean that it is not seeded.
    struct State {
        std::uint8_t key[32];
        std::uint32_t words[256];
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

    std::unique_ptr<State, Unmap> m_state;
    bool m_wipedOnFork = false;
};

}  // namespace torvel
