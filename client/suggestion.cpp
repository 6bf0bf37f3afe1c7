#include "client/suggestion.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "platform/values/ascii.h"

namespace rebate {
namespace {

// The letters to insert, leave out, replace or swap with their neighbour to make one text of the other.
std::size_t Distance(std::string_view left, std::string_view right) {
  std::vector<std::size_t> before_last;
  std::vector<std::size_t> last(right.size() + 1);
  std::iota(last.begin(), last.end(), std::size_t{0});
  for (std::size_t i = 0; i < left.size(); ++i) {
    std::vector<std::size_t> row = {i + 1};
    for (std::size_t j = 0; j < right.size(); ++j) {
      const std::size_t replaced = last[j] + (left[i] == right[j] ? 0 : 1);
      row.push_back(std::min({row[j] + 1, last[j + 1] + 1, replaced}));
      const bool swapped = i > 0 && j > 0 && left[i] == right[j - 1] && left[i - 1] == right[j];
      if (swapped) row.back() = std::min(row.back(), before_last[j - 1] + 1);
    }
    before_last = std::exchange(last, std::move(row));
  }
  return last.back();
}

}  // namespace

Text Nearest(std::string_view typed, const std::vector<Text>& names) {
  const Text wanted = AsciiLower(typed);
  Text nearest;
  std::size_t least = 1 + wanted.size() / 4;  // about a letter in four may be wrong
  for (const Text& name : names) {
    if (wanted.size() >= 3 && name.starts_with(wanted)) return name;
    const std::size_t distance = Distance(wanted, AsciiLower(name));
    if (distance > least || (distance == least && !nearest.empty()) || distance >= wanted.size()) continue;
    least = distance;
    nearest = name;
  }
  return nearest;
}

Text DidYouMean(std::string_view typed, const std::vector<Text>& names) {
  const Text name = Nearest(typed, names);
  return name.empty() ? Text() : "; did you mean " + name + "?";
}

}  // namespace rebate
