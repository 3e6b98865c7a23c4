// SHA-256 (FIPS 180-4): names a state of the rule file. The library links nothing that has it.

#ifndef COMMON_SHA256_H
#define COMMON_SHA256_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// Computes the digest of a text that comes in pieces.
class Sha256 {
  public:
    void Add(std::string_view bytes) {
        size_ += bytes.size();
        for (char const byte : bytes) {
            block_[used_++] = static_cast<std::uint8_t>(byte);
            if (used_ == block_.size())
                MixBlock();
        }
    }

    /// Returns the digest of all that was added, as 64 hexadecimal digits. Nothing may be added
    /// afterwards.
    std::string Digits() {
        std::uint64_t const bits = size_ * 8;
        Add(std::string_view("\x80", 1));
        while (used_ != block_.size() - sizeof bits)
            Add(std::string_view("\0", 1));
        for (std::size_t byte = 0; byte < sizeof bits; ++byte) {
            char const c = static_cast<char>(bits >> (8 * (sizeof bits - 1 - byte)));
            Add(std::string_view(&c, 1));
        }
        std::string digits;
        for (std::uint32_t const word : state_)
            for (int shift = 28; shift >= 0; shift -= 4)
                digits += "0123456789abcdef"[word >> shift & 15];
        return digits;
    }

  private:
    static constexpr std::size_t kRounds = 64;
    using Words = std::array<std::uint32_t, 8>;

    static constexpr std::uint32_t Rotated(std::uint32_t word, unsigned bits) {
        return word >> bits | word << (32 - bits);
    }

    /// The first 32 bits of the fractions of the cube roots of the first 64 primes.
    static constexpr std::array<std::uint32_t, kRounds> kRoundConstants{
        0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4,
        0xab1c5ed5, 0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe,
        0x9bdc06a7, 0xc19bf174, 0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f,
        0x4a7484aa, 0x5cb0a9dc, 0x76f988da, 0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7,
        0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967, 0x27b70a85, 0x2e1b2138, 0x4d2c6dfc,
        0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85, 0xa2bfe8a1, 0xa81a664b,
        0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070, 0x19a4c116,
        0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
        0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7,
        0xc67178f2};

    std::array<std::uint32_t, kRounds> Schedule() const {
        std::array<std::uint32_t, kRounds> w{};
        for (std::size_t i = 0; i < 16; ++i)
            for (std::size_t byte = 0; byte < 4; ++byte)
                w[i] = w[i] << 8 | block_[4 * i + byte];
        for (std::size_t i = 16; i < kRounds; ++i) {
            std::uint32_t const a = w[i - 15];
            std::uint32_t const b = w[i - 2];
            w[i] = w[i - 16] + (Rotated(a, 7) ^ Rotated(a, 18) ^ a >> 3) + w[i - 7] +
                   (Rotated(b, 17) ^ Rotated(b, 19) ^ b >> 10);
        }
        return w;
    }

    void MixBlock() {
        std::array<std::uint32_t, kRounds> const w = Schedule();
        auto [a, b, c, d, e, f, g, h] = state_;
        for (std::size_t i = 0; i < kRounds; ++i) {
            std::uint32_t const one = h + (Rotated(e, 6) ^ Rotated(e, 11) ^ Rotated(e, 25)) +
                                      ((e & f) ^ (~e & g)) + kRoundConstants[i] + w[i];
            std::uint32_t const two =
                (Rotated(a, 2) ^ Rotated(a, 13) ^ Rotated(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
            h = g;
            g = f;
            f = e;
            e = d + one;
            d = c;
            c = b;
            b = a;
            a = one + two;
        }
        Words const mixed{a, b, c, d, e, f, g, h};
        for (std::size_t i = 0; i < state_.size(); ++i)
            state_[i] += mixed[i];
        used_ = 0;
    }

    /// The first 32 bits of the fractions of the square roots of the first 8 primes.
    Words state_{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<std::uint8_t, 64> block_{};
    std::size_t used_ = 0; // Bytes of the block.
    std::uint64_t size_ = 0;
};

} // namespace CallRecordingUtils

#endif
