#ifndef TAGWRIGHT_APP_DISTINCT_DRAWS_H_
#define TAGWRIGHT_APP_DISTINCT_DRAWS_H_

#include <atomic>
#include <cstdint>
#include <memory>

namespace tagwright {

class Platform;
class RandomGenerator;

// The values that name a rewrite's temporary file, for a host that runs many
// rewrites at once: the name holds the second and a value of four digits, and
// independent seeds soon give two rewrites of one folder in the same second
// one name (the second one then fails). These draws instead walk all 10,000
// four-digit values in a scrambled order before one comes again.
class DistinctDraws {
 public:
  explicit DistinctDraws(Platform& platform);
  std::unique_ptr<RandomGenerator> generator();

 private:
  std::atomic<std::uint64_t> drawn_ = 0;
  const std::uint64_t firstValue_;
};

// A platform that passes every call on to `inner`, but whose generators all
// draw from one DistinctDraws.
std::shared_ptr<Platform> withDistinctDraws(Platform& inner);

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_DISTINCT_DRAWS_H_
