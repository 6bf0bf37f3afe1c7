#include "client/export_schemes.h"

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <ostream>

#include "client/form_view.h"
#include "client/output_file.h"
#include "client/progress.h"
#include "client/scheme_lookup.h"
#include "client/stored_request.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"
#include "platform/database/recordset.h"
#include "platform/files/files.h"

namespace rebate {
namespace {

namespace fs = std::filesystem;

std::vector<Long> AllSchemes(const Account& account) {
  std::vector<Long> ids;
  const RecordsetRef rows =
      account.Query("select FSchemeID from t_FL_SchemeList order by case when FEnable=1 then 1 else 0 end, FSchemeID");
  for (; !rows->Eof(); rows->MoveNext()) ids.push_back(ToLong(rows->FieldValue(std::size_t{0})));
  return ids;
}

Json SchemeJson(Account& account, Long id, bool as_new) {
  const SchemeHead head = FindSchemes(account, {id}).front();
  if (head.is_form) {
    Json form = LoadForm(account, id);
    if (as_new) form["SchemeID"] = 0;
    return form;
  }
  Json request = LoadRequest(account, head);
  if (as_new) request["SchemeMainData"]["FSchemeID"] = 0;
  if (!head.enabled) request["SchemeMainData"]["FEnable"] = 0;
  return request;
}

// Calls `write(position, id, scheme)` for each scheme, all as of one moment where the account is embedded.
template <typename Write>
std::size_t EachScheme(const SchemeExport& options, Tool& tool, Write write) {
  Account account(options.dsn);
  account.JoinCalls();
  const std::vector<Long> ids = AllSchemes(account);
  Progress progress(tool.err, tool.progress, "exporting", ids.size());
  for (std::size_t i = 0; i < ids.size(); ++i) {
    write(i + 1, ids[i], SchemeJson(account, ids[i], options.as_new));
    progress.Step();
  }
  return ids.size();
}

bool IsDirectoryName(const Text& target) {
  return target.ends_with('/') || files::KindOf(target) == files::Kind::Directory;
}

// The directory, made where it isn't there. Raises 5 where it holds files that a save of it would take as well.
fs::path NeedDirectory(const Text& target) {
  const fs::path directory = files::ToPath(target);
  std::error_code error;
  fs::create_directories(directory, error);
  for (fs::directory_iterator entry(directory, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    if (entry->path().extension() != ".json") continue;
    throw Error(error_number::kInvalidCall, "rebate",
                target + " holds JSON files already; export to another directory");
  }
  if (error) throw Error(error_number::kInvalidCall, "rebate", "Can't write to " + target + ": " + error.message());
  return directory;
}

// By name as they are to be saved.
Text FileName(std::size_t position, Long id) {
  const Text number = std::to_string(position);
  return Text(6 - std::min<std::size_t>(number.size(), 6), '0') + number + "-scheme-" + std::to_string(id) + ".json";
}

std::size_t WriteDirectory(const SchemeExport& options, Tool& tool) {
  const fs::path directory = NeedDirectory(options.target);
  return EachScheme(options, tool, [&](std::size_t position, Long id, const Json& scheme) {
    OutputFile file(files::FromPath(directory / files::ToPath(FileName(position, id))));
    file.stream() << scheme.dump(2) << '\n';
    file.Finish();
  });
}

std::size_t WriteLines(const SchemeExport& options, std::ostream& out, Tool& tool) {
  return EachScheme(options, tool, [&](std::size_t, Long, const Json& scheme) { out << JsonLine(scheme) << '\n'; });
}

std::size_t WriteFile(const SchemeExport& options, Tool& tool) {
  OutputFile file(options.target);
  const std::size_t count = WriteLines(options, file.stream(), tool);
  file.Finish();
  return count;
}

}  // namespace

void ExportSchemes(const SchemeExport& options, Tool& tool) {
  if (options.target.empty()) {
    WriteLines(options, tool.out, tool);
    return;
  }
  const std::size_t count = IsDirectoryName(options.target) ? WriteDirectory(options, tool) : WriteFile(options, tool);
  if (options.json) {
    tool.out << JsonLine({{"exported", count}, {"file", options.target}}) << '\n';
  } else {
    tool.out << "Exported " << count << " schemes to " << options.target << ".\n";
  }
}

}  // namespace rebate
