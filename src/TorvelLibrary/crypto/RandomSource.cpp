#include "TorvelLibrary/crypto/RandomSource.h"

#include "TorvelLibrary/crypto/CipherKernels.h"
#include "TorvelPlatform/foundation/FatalError.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include <string.h>
#include <sys/mman.h>
#include <sys/random.h>

namespace torvel {
namespace {

bool isZero(const std::uint8_t (&key)[32]) {
    return std::all_of(std::begin(key), std::end(key), [](std::uint8_t byte) { return byte == 0; });
}

}  // namespace

RandomSource& RandomSource::ofThisThread() {
    thread_local RandomSource source;
    if (!source.m_wipedOnFork) source.forget();
    return source;
}

RandomSource::RandomSource() {
    void* const page =
        mmap(nullptr, sizeof(State), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) fatalError("Random: the system gives no memory");
    m_state.reset(static_cast<State*>(page));
    m_wipedOnFork = madvise(page, sizeof(State), MADV_WIPEONFORK) == 0;
    madvise(page, sizeof(State), MADV_DONTDUMP);
}

// For kernels that cannot wipe on fork: nothing is kept between two operations, which costs a seed each.
void RandomSource::forget() { explicit_bzero(m_state.get(), sizeof(State)); }

void RandomSource::Unmap::operator()(State* state) const {
    explicit_bzero(state, sizeof *state);
    munmap(state, sizeof *state);
}

// Counter mode over one run: the first two blocks are the next key, the rest are the words to draw.
void RandomSource::refill() {
    State& state = *m_state;
    if (isZero(state.key) && getentropy(state.key, sizeof state.key) != 0)
        fatalError("Random: the system gives no entropy");

    constexpr std::size_t blocks = (sizeof state.key + sizeof state.words) / aesBlockSize;
    std::uint8_t counters[blocks * aesBlockSize] = {};
    for (std::size_t i = 0; i < blocks; ++i) counters[i * aesBlockSize] = static_cast<std::uint8_t>(i);

    const CipherKernels& kernels = cipherKernels();
    AESKeySchedule schedule;
    kernels.expandKey({state.key, 8}, schedule);
    static_assert(offsetof(State, words) == sizeof state.key, "key and words are written as one run");
    kernels.encryptBlocks(schedule, counters, reinterpret_cast<std::uint8_t*>(&state), blocks);
    explicit_bzero(&schedule, sizeof schedule);
    state.unused = sizeof state.words / sizeof state.words[0];
}

}  // namespace torvel
