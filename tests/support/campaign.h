// For tests that are a campaign, too: they do more of the same when
// scripts/campaign runs them, and tell in figures what they did.
#ifndef KORVAN_TESTS_SUPPORT_CAMPAIGN_H_
#define KORVAN_TESTS_SUPPORT_CAMPAIGN_H_

#include <cstddef>
#include <cstdlib>
#include <iostream>

namespace korvan::test {

// How often to do what can be done any number of times: `few` in scripts/test,
// `many` in a campaign.
inline std::size_t Rounds(std::size_t few, std::size_t many) {
  return std::getenv("KORVAN_CAMPAIGN") == nullptr ? few : many;
}

// Prints a line of what was done, for example Figures(554, " allocations").
template <class... Parts>
void Figures(const Parts&... parts) {
  std::cout << "figures: ";
  (std::cout << ... << parts) << std::endl;
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_SUPPORT_CAMPAIGN_H_
