#pragma once

#include <string_view>
#include <vector>

namespace rebate::tsql {

// Cuts a batch where its statements begin, so that each part, in its order, can be taken for a batch of its own: an
// `if` stays with its branches, a block with its end. A batch that can't be cut safely (it declares variables, jumps,
// raises errors, makes objects, or has common tables) comes back whole. One pass; whether the parts parse is not looked
// at.
std::vector<std::string_view> SplitBatch(std::string_view batch);

}  // namespace rebate::tsql
