#include "TorvelLibrary/crypto/CipherKernels.h"

#include <initializer_list>

#include <string.h>

// AES without tables and without branches on secrets, so that neither cache nor timing tells anything of the
// key. Four blocks are bitsliced into eight 64-bit slices: slice k holds bit k of all 64 bytes. The byte in
// row r and column c of block b stands at bit 16r + 4c + b, so that a row is a 16-bit group, ShiftRows turns
// the groups, and MixColumns is made of rotations by whole rows.
namespace torvel {
namespace {

constexpr std::size_t lanes = 4;

struct Slices {
    std::uint64_t bit[8];
};

std::uint64_t rotateRows(std::uint64_t slice, unsigned rows) {
    return slice >> (16 * rows) | slice << (64 - 16 * rows);
}

// Exchanges the bits of `low` under mask << shift with those of `high` under mask.
void exchange(std::uint64_t& low, std::uint64_t& high, unsigned shift, std::uint64_t mask) {
    const std::uint64_t moved = ((low >> shift) ^ high) & mask;
    high ^= moved;
    low ^= moved << shift;
}

// Transposes bit i of every byte of word j with bit j of the same byte of word i. Its own inverse.
void transpose(Slices& s) {
    for (unsigned i = 0; i < 8; i += 2) exchange(s.bit[i], s.bit[i + 1], 1, 0x5555555555555555);
    for (unsigned i : {0U, 1U, 4U, 5U}) exchange(s.bit[i], s.bit[i + 2], 2, 0x3333333333333333);
    for (unsigned i = 0; i < 4; ++i) exchange(s.bit[i], s.bit[i + 4], 4, 0x0F0F0F0F0F0F0F0F);
}

// Moves the four bytes of a column two apart, and back.
std::uint64_t spread(const std::uint8_t* column) {
    return std::uint64_t{column[0]} | std::uint64_t{column[1]} << 16 | std::uint64_t{column[2]} << 32 |
           std::uint64_t{column[3]} << 48;
}

void gather(std::uint64_t word, std::uint8_t* column) {
    for (unsigned row = 0; row < 4; ++row) column[row] = static_cast<std::uint8_t>(word >> (16 * row));
}

// Before the transposition word 4 (c mod 2) + b holds columns c and c + 2 of block b, interleaved.
void loadBlock(Slices& s, const std::uint8_t* block, unsigned lane) {
    s.bit[lane] = spread(block) | spread(block + 8) << 8;
    s.bit[lane + 4] = spread(block + 4) | spread(block + 12) << 8;
}

void storeBlock(const Slices& s, std::uint8_t* block, unsigned lane) {
    gather(s.bit[lane], block);
    gather(s.bit[lane] >> 8, block + 8);
    gather(s.bit[lane + 4], block + 4);
    gather(s.bit[lane + 4] >> 8, block + 12);
}

// The S-box as the circuit of Boyar and Peralta, "A new combinational logic minimization technique" (2010).
void subBytes(Slices& s) {
    const std::uint64_t x0 = s.bit[7], x1 = s.bit[6], x2 = s.bit[5], x3 = s.bit[4];
    const std::uint64_t x4 = s.bit[3], x5 = s.bit[2], x6 = s.bit[1], x7 = s.bit[0];

    const std::uint64_t y14 = x3 ^ x5, y13 = x0 ^ x6, y9 = x0 ^ x3, y8 = x0 ^ x5, t0 = x1 ^ x2;
    const std::uint64_t y1 = t0 ^ x7, y4 = y1 ^ x3, y12 = y13 ^ y14, y2 = y1 ^ x0, y5 = y1 ^ x6;
    const std::uint64_t y3 = y5 ^ y8, t1 = x4 ^ y12, y15 = t1 ^ x5, y20 = t1 ^ x1, y6 = y15 ^ x7;
    const std::uint64_t y10 = y15 ^ t0, y11 = y20 ^ y9, y7 = x7 ^ y11, y17 = y10 ^ y11;
    const std::uint64_t y19 = y10 ^ y8, y16 = t0 ^ y11, y21 = y13 ^ y16, y18 = x0 ^ y16;

    const std::uint64_t t2 = y12 & y15, t4 = (y3 & y6) ^ t2, t6 = (y4 & x7) ^ t2, t7 = y13 & y16;
    const std::uint64_t t9 = (y5 & y1) ^ t7, t11 = (y2 & y7) ^ t7, t12 = y9 & y11;
    const std::uint64_t t14 = (y14 & y17) ^ t12, t16 = (y8 & y10) ^ t12;
    const std::uint64_t t21 = t4 ^ t14 ^ y20, t22 = t6 ^ t16 ^ y19;
    const std::uint64_t t23 = t9 ^ t14 ^ y21, t24 = t11 ^ t16 ^ y18;
    const std::uint64_t t25 = t21 ^ t22, t26 = t21 & t23, t27 = t24 ^ t26, t29 = (t25 & t27) ^ t22;
    const std::uint64_t t33 = ((t22 ^ t26) & (t23 ^ t24)) ^ t24, t36 = t24 & (t27 ^ t33);
    const std::uint64_t t37 = t36 ^ t23 ^ t33, t40 = t25 ^ (t29 & (t27 ^ t36));
    const std::uint64_t t41 = t40 ^ t37, t42 = t29 ^ t33, t43 = t29 ^ t40, t44 = t33 ^ t37, t45 = t42 ^ t41;

    const std::uint64_t z0 = t44 & y15, z1 = t37 & y6, z2 = t33 & x7, z3 = t43 & y16, z4 = t40 & y1;
    const std::uint64_t z5 = t29 & y7, z6 = t42 & y11, z7 = t45 & y17, z8 = t41 & y10, z9 = t44 & y12;
    const std::uint64_t z10 = t37 & y3, z11 = t33 & y4, z12 = t43 & y13, z13 = t40 & y5, z14 = t29 & y2;
    const std::uint64_t z15 = t42 & y9, z16 = t45 & y14, z17 = t41 & y8;

    const std::uint64_t t46 = z15 ^ z16, t48 = z5 ^ z13, t53 = z0 ^ z3, t54 = z6 ^ z7, t57 = z2 ^ z12 ^ t53;
    const std::uint64_t t58 = z4 ^ t46, t59 = z3 ^ t54, t62 = z7 ^ z8 ^ t58, t63 = z9 ^ z10 ^ t58;
    const std::uint64_t t64 = z4 ^ t59, t65 = z14 ^ t57 ^ t62, t66 = z1 ^ t63, s3 = t53 ^ t66;
    s.bit[7] = t59 ^ t63;
    s.bit[6] = t64 ^ ~s3;
    s.bit[5] = z16 ^ z17 ^ ~(t64 ^ t65);
    s.bit[4] = s3;
    s.bit[3] = z2 ^ z5 ^ t66;
    s.bit[2] = z10 ^ z11 ^ t65;
    s.bit[1] = z12 ^ t48 ^ ~t62;
    s.bit[0] = t48 ^ ~(t46 ^ t57);
}

// The inverse of the S-box's affine map (FIPS-197 5.1.1): bit i becomes the sum of bits i+2, i+5 and i+7 of x
// ^ 63h.
void invertAffine(Slices& s) {
    for (unsigned i : {0U, 1U, 5U, 6U}) s.bit[i] = ~s.bit[i];
    const Slices x = s;
    for (unsigned i = 0; i < 8; ++i) s.bit[i] = x.bit[(i + 2) % 8] ^ x.bit[(i + 5) % 8] ^ x.bit[(i + 7) % 8];
}

// The S-box is affine(inverse(x)) and field inversion undoes itself.
void invSubBytes(Slices& s) {
    invertAffine(s);
    subBytes(s);
    invertAffine(s);
}

std::uint64_t turnRow(std::uint64_t slice, unsigned row, unsigned columns) {
    const std::uint64_t group = slice >> (16 * row) & 0xFFFF;
    return ((group >> (4 * columns) | group << (16 - 4 * columns)) & 0xFFFF) << (16 * row);
}

void shiftRows(Slices& s) {
    for (std::uint64_t& x : s.bit) x = (x & 0xFFFF) | turnRow(x, 1, 1) | turnRow(x, 2, 2) | turnRow(x, 3, 3);
}

void invShiftRows(Slices& s) {
    for (std::uint64_t& x : s.bit) x = (x & 0xFFFF) | turnRow(x, 1, 3) | turnRow(x, 2, 2) | turnRow(x, 3, 1);
}

// Multiplication by x in GF(2^8), modulo x^8 + x^4 + x^3 + x + 1.
Slices doubled(const Slices& s) {
    const std::uint64_t carry = s.bit[7];
    return {carry,    s.bit[0] ^ carry, s.bit[1], s.bit[2] ^ carry, s.bit[3] ^ carry,
            s.bit[4], s.bit[5],         s.bit[6]};
}

// 2 a[r] + 3 a[r+1] + a[r+2] + a[r+3] for every row r.
void mixColumns(Slices& s) {
    Slices sum;
    for (unsigned i = 0; i < 8; ++i) sum.bit[i] = s.bit[i] ^ rotateRows(s.bit[i], 1);
    const Slices twice = doubled(sum);
    for (unsigned i = 0; i < 8; ++i)
        s.bit[i] = twice.bit[i] ^ rotateRows(s.bit[i], 1) ^ rotateRows(sum.bit[i], 2);
}

// The inverse matrix is MixColumns after a[r] + 4 (a[r] + a[r+2]).
void invMixColumns(Slices& s) {
    Slices sum;
    for (unsigned i = 0; i < 8; ++i) sum.bit[i] = s.bit[i] ^ rotateRows(s.bit[i], 2);
    const Slices fourfold = doubled(doubled(sum));
    for (unsigned i = 0; i < 8; ++i) s.bit[i] ^= fourfold.bit[i];
    mixColumns(s);
}

void addKey(Slices& s, const Slices& key) {
    for (unsigned i = 0; i < 8; ++i) s.bit[i] ^= key.bit[i];
}

// The schedule with every round key in all four lanes; wiped when it goes.
class SlicedKeys {
  public:
    explicit SlicedKeys(const AESKeySchedule& schedule) : m_rounds(schedule.rounds) {
        for (unsigned round = 0; round <= m_rounds; ++round) {
            for (unsigned lane = 0; lane < lanes; ++lane)
                loadBlock(m_keys[round], schedule.roundKeys + aesBlockSize * round, lane);
            transpose(m_keys[round]);
        }
    }
    ~SlicedKeys() { explicit_bzero(m_keys, sizeof m_keys); }
    SlicedKeys(const SlicedKeys&) = delete;
    SlicedKeys& operator=(const SlicedKeys&) = delete;

    // FIPS-197 5.1 and 5.3.
    void encrypt(Slices& s) const {
        addKey(s, m_keys[0]);
        for (unsigned round = 1; round <= m_rounds; ++round) {
            subBytes(s);
            shiftRows(s);
            if (round < m_rounds) mixColumns(s);
            addKey(s, m_keys[round]);
        }
    }

    void decrypt(Slices& s) const {
        for (unsigned round = m_rounds; round > 0; --round) {
            addKey(s, m_keys[round]);
            if (round < m_rounds) invMixColumns(s);
            invShiftRows(s);
            invSubBytes(s);
        }
        addKey(s, m_keys[0]);
    }

  private:
    Slices m_keys[15];
    unsigned m_rounds;
};

// Runs up to four blocks through one of the two directions.
template <void (SlicedKeys::*transform)(Slices&) const>
void transformBlocks(const SlicedKeys& keys, const std::uint8_t* in, std::uint8_t* out, std::size_t blocks) {
    Slices s{};
    for (unsigned lane = 0; lane < blocks; ++lane) loadBlock(s, in + aesBlockSize * lane, lane);
    transpose(s);
    (keys.*transform)(s);
    transpose(s);
    for (unsigned lane = 0; lane < blocks; ++lane) storeBlock(s, out + aesBlockSize * lane, lane);
}

std::size_t atMostLanes(std::size_t blocks) { return blocks < lanes ? blocks : lanes; }

void xorBlock(std::uint8_t* target, const std::uint8_t* a, const std::uint8_t* b) {
    for (std::size_t i = 0; i < aesBlockSize; ++i) target[i] = a[i] ^ b[i];
}

void substituteWord(std::uint8_t* word) {
    Slices s{};
    s.bit[0] = spread(word);
    transpose(s);
    subBytes(s);
    transpose(s);
    gather(s.bit[0], word);
}

// FIPS-197 5.2, byte by byte.
void expandKey(AESKey key, AESKeySchedule& schedule) {
    schedule.rounds = key.words + 6;
    memcpy(schedule.roundKeys, key.bytes, 4 * key.words);
    std::uint8_t constant = 1;
    for (unsigned i = key.words; i < 4 * (schedule.rounds + 1); ++i) {
        std::uint8_t* const word = schedule.roundKeys + 4 * i;
        memcpy(word, word - 4, 4);
        if (i % key.words == 0) {
            const std::uint8_t first = word[0];
            memmove(word, word + 1, 3);
            word[3] = first;
        }
        if (i % key.words == 0 || (key.words == 8 && i % key.words == 4)) substituteWord(word);
        if (i % key.words == 0) {
            word[0] ^= constant;
            constant = static_cast<std::uint8_t>(constant << 1 ^ (constant >> 7) * 0x1B);
        }
        for (unsigned j = 0; j < 4; ++j) word[j] ^= (word - 4 * key.words)[j];
    }
}

void encryptBlocks(const AESKeySchedule& schedule, const std::uint8_t* in, std::uint8_t* out,
                   std::size_t blocks) {
    const SlicedKeys keys(schedule);
    for (std::size_t done = 0; done < blocks; done += lanes)
        transformBlocks<&SlicedKeys::encrypt>(keys, in + aesBlockSize * done, out + aesBlockSize * done,
                                              atMostLanes(blocks - done));
}

void cbcEncrypt(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                std::uint8_t* out, std::size_t blocks) {
    const SlicedKeys keys(schedule);
    const std::uint8_t* chain = iv;
    std::uint8_t mixed[aesBlockSize];
    for (std::size_t i = 0; i < blocks; ++i, in += aesBlockSize, out += aesBlockSize) {
        xorBlock(mixed, in, chain);
        transformBlocks<&SlicedKeys::encrypt>(keys, mixed, out, 1);
        chain = out;
    }
    explicit_bzero(mixed, sizeof mixed);
}

void cbcDecrypt(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                std::uint8_t* out, std::size_t blocks) {
    const SlicedKeys keys(schedule);
    for (std::size_t done = 0; done < blocks; done += lanes)
        transformBlocks<&SlicedKeys::decrypt>(keys, in + aesBlockSize * done, out + aesBlockSize * done,
                                              atMostLanes(blocks - done));
    const std::uint8_t* chain = iv;
    for (std::size_t i = 0; i < blocks; ++i, in += aesBlockSize, out += aesBlockSize) {
        xorBlock(out, out, chain);
        chain = in;
    }
}

}  // namespace

constinit const CipherKernels portableCipherKernels = {
    "portable", expandKey, encryptBlocks, cbcEncrypt, cbcDecrypt, nullptr, nullptr,
};

}  // namespace torvel
