#include "distinct_draws.h"

#include "platform/platform_wrapper.h"

namespace tagwright {
namespace {

class WalkingRandom : public RandomGenerator {
 public:
  WalkingRandom(std::atomic<std::uint64_t>& drawn, std::uint64_t firstValue)
      : drawn_(drawn), firstValue_(firstValue) {}
  double next() override {
    // 7919 is prime to 10000, so 10000 steps meet every value once.
    constexpr std::uint64_t kValues = 10000, kStep = 7919;
    const std::uint64_t value = (firstValue_ + drawn_.fetch_add(1) * kStep) % kValues;
    return (static_cast<double>(value) + 0.5) / static_cast<double>(kValues);
  }

 private:
  std::atomic<std::uint64_t>& drawn_;
  const std::uint64_t firstValue_;
};

class DistinctDrawsPlatform : public PlatformWrapper {
 public:
  explicit DistinctDrawsPlatform(Platform& inner) : PlatformWrapper(inner), draws_(inner) {}
  std::unique_ptr<RandomGenerator> seededRandom() override { return draws_.generator(); }

 private:
  DistinctDraws draws_;
};

}  // namespace

DistinctDraws::DistinctDraws(Platform& platform)
    : firstValue_(static_cast<std::uint64_t>(platform.seededRandom()->next() * 10000.0)) {}

std::unique_ptr<RandomGenerator> DistinctDraws::generator() {
  return std::make_unique<WalkingRandom>(drawn_, firstValue_);
}

std::shared_ptr<Platform> withDistinctDraws(Platform& inner) {
  return std::make_shared<DistinctDrawsPlatform>(inner);
}

}  // namespace tagwright
