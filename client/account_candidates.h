#pragma once

#include <vector>

#include "platform/values/types.h"

namespace rebate {

// What a shell may offer, with what it means.
struct Candidate {
  Text word;
  Text meaning;
};

// The rebate types that an account offers, and its schemes, newest first; both under the data source's data rights.
// Raises where the account can't tell, or would have to be brought to a new version first. Where it doesn't answer
// within two seconds, the process ends, with status 0.
std::vector<Candidate> TypeCandidates(const Text& dsn);
std::vector<Candidate> SchemeCandidates(const Text& dsn);

}  // namespace rebate
