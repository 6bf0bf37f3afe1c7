#include "client/account_candidates.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <thread>

#include "client/account.h"
#include "client/rebate_classes.h"
#include "client/row_tables.h"
#include "client/scheme_rows.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "platform/database/connect.h"

namespace rebate {
namespace {

constexpr Long kAllStates = 2;

constexpr std::chrono::seconds kPatience{2};

using Candidates = std::vector<Candidate>;

// What `look` gives, unless it takes longer than one waits for a shell: drivers don't always keep to a timeout.
Candidates InTime(std::function<Candidates()> look) {
  std::packaged_task<Candidates()> task(std::move(look));
  std::future<Candidates> found = task.get_future();
  std::thread looking(std::move(task));
  // A driver that waits for its server may hold what an ordinary end would wait for in turn.
  if (found.wait_for(kPatience) != std::future_status::ready) std::_Exit(0);
  looking.join();
  return found.get();
}

// Nobody waits for a shell's answer as for that of a verb.
Text Hasty(const Text& dsn) {
  const DataSource source = DataSource::Parse(dsn);
  if (!source.embedded) return dsn + ";Login Timeout=2;Query Timeout=2";
  if (NeedsUpgrade(source)) throw Error(error_number::kInvalidCall, "rebate", "An older version made the account");
  return dsn;
}

Candidates CandidatesOf(const Vector& rows, const char* word, const char* meaning) {
  Candidates candidates;
  for (Long i = 1; i <= rows.Size(); ++i) {
    const auto row = ObjectAs<Dictionary>(rows.Item(i));
    candidates.push_back({CellText(*row, word), CellText(*row, meaning)});
  }
  return candidates;
}

Candidates TypesOf(const Text& dsn) {
  Account account(Hasty(dsn));
  const auto types = New<Vector>();
  for (const Long rebate_class : ClassesToShow({})) AddAll(TypesOfClass(account, rebate_class), *types);
  return CandidatesOf(*types, "FRebateType", "FTypeName");
}

Candidates SchemesOf(const Text& dsn) {
  Account account(Hasty(dsn));
  const auto schemes = New<Vector>();
  for (const Long rebate_class : ClassesToShow({})) {
    const auto request = New<Dictionary>();
    request->SetValue("Status", kAllStates);
    request->SetValue("RebateClassType", rebate_class);
    AddAll(ObjectAs<Vector>(account.Call("LoadSchemeListData", {request})), *schemes);
  }
  Candidates candidates = CandidatesOf(*schemes, "FSchemeID", "FSchemeName");
  const auto newer = [](const Candidate& left, const Candidate& right) {
    return std::pair(left.word.size(), left.word) > std::pair(right.word.size(), right.word);
  };
  std::sort(candidates.begin(), candidates.end(), newer);
  return candidates;
}

}  // namespace

std::vector<Candidate> TypeCandidates(const Text& dsn) {
  return InTime([dsn] { return TypesOf(dsn); });
}

std::vector<Candidate> SchemeCandidates(const Text& dsn) {
  return InTime([dsn] { return SchemesOf(dsn); });
}

}  // namespace rebate
