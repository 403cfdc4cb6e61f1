// DemoRandom: the demo generator's own pseudo-random numbers.
//
// xoshiro256** seeded through splitmix64, with the few draws the generator
// needs written out here, so that a seed gives the same database on every
// platform and standard library (std::uniform_*_distribution does not).
// derive() makes an independent stream from a seed and a path of numbers
// (company, employee, ...), so each part of the data can be drawn on its own
// without disturbing the others.
//
// Plain value type; one stream per thread of use.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

namespace orvalis::demo {

inline uint64_t splitmix64(uint64_t& state) {
  uint64_t z = (state += 0x9e3779b97f4a7c15ULL);
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
  return z ^ (z >> 31);
}

class Random {
 public:
  explicit Random(uint64_t seed) {
    uint64_t s = seed;
    for (uint64_t& word : s_) word = splitmix64(s);
  }

  // An independent stream for (seed, a, b, c).
  static Random derive(uint64_t seed, uint64_t a, uint64_t b = 0, uint64_t c = 0) {
    uint64_t s = seed;
    uint64_t mixed = splitmix64(s) ^ (a * 0xd1b54a32d192ed03ULL);
    s = mixed;
    mixed = splitmix64(s) ^ (b * 0x8cb92ba72f3d8dd7ULL);
    s = mixed;
    mixed = splitmix64(s) ^ (c * 0xa0761d6478bd642fULL);
    return Random(mixed);
  }

  uint64_t next() {
    const uint64_t result = rotl(s_[1] * 5, 7) * 9;
    const uint64_t t = s_[1] << 17;
    s_[2] ^= s_[0];
    s_[3] ^= s_[1];
    s_[1] ^= s_[2];
    s_[0] ^= s_[3];
    s_[2] ^= t;
    s_[3] = rotl(s_[3], 45);
    return result;
  }

  // Uniform in [0, 1).
  double unit() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
  // Uniform integer in [0, n); 0 when n <= 0.
  int below(int n) { return n <= 0 ? 0 : static_cast<int>((next() >> 11) % static_cast<uint64_t>(n)); }
  // Uniform integer in [lo, hi].
  int between(int lo, int hi) { return hi <= lo ? lo : lo + below(hi - lo + 1); }
  bool chance(double p) { return unit() < p; }

  // Poisson-distributed count with the given mean (Knuth; small means).
  int poisson(double mean) {
    if (mean <= 0) return 0;
    const double limit = std::exp(-mean);
    int k = 0;
    double p = unit();
    while (p > limit) {
      ++k;
      p *= unit();
    }
    return k;
  }

  // An index drawn with the given weights.
  int weighted(const std::vector<int>& weights) {
    int total = 0;
    for (int w : weights) total += w;
    int r = below(total);
    for (size_t i = 0; i < weights.size(); ++i) {
      if (r < weights[i]) return static_cast<int>(i);
      r -= weights[i];
    }
    return static_cast<int>(weights.size()) - 1;
  }

 private:
  static uint64_t rotl(uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }
  uint64_t s_[4];
};

}  // namespace orvalis::demo
