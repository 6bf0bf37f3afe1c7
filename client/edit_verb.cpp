#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>

#include "client/form_view.h"
#include "client/json_file.h"
#include "client/save_files.h"
#include "client/scheme_lookup.h"
#include "client/stored_request.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"
#include "platform/files/files.h"

namespace rebate {
namespace {

struct EditOptions : AccountOptions {
  Long id = 0;
  bool strict = false;
};

Text EditorCommand() {
  for (const char* name : {"VISUAL", "EDITOR"}) {
    if (const std::optional<Text> command = files::EnvironmentVariable(name); command && !command->empty())
      return *command;
  }
  throw Error(error_number::kInvalidCall, "rebate", "EDITOR names no editor; set it, such as EDITOR=vi");
}

// A new file beside other temporary ones that holds the text.
Text WriteDraft(Long id, const Text& text) {
  const Text name = "rebate-" + std::to_string(id) + "-" + std::to_string(std::random_device()()) + ".json";
  const std::filesystem::path path = std::filesystem::temp_directory_path() / files::ToPath(name);
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw Error(error_number::kInvalidCall, "rebate", "Can't write " + files::FromPath(path));
  return files::FromPath(path);
}

void Edit(const EditOptions& options, Tool& tool) {
  const Text editor = EditorCommand();
  SaveOptions save;
  save.dsn = options.dsn;
  save.json = options.json;
  save.strict = options.strict;
  bool is_form = false;
  Text before;
  {
    Account account(options.dsn);
    const SchemeHead head = FindSchemes(account, {options.id}).front();
    is_form = head.is_form;
    before = (is_form ? LoadForm(account, options.id) : LoadRequest(account, head)).dump(2) + "\n";
  }
  save.file = WriteDraft(options.id, before);
  const int ended = std::system((editor + " \"" + save.file + "\"").c_str());
  if (ended != 0) throw Error(error_number::kInvalidCall, "rebate", "The editor failed; the draft is " + save.file);
  try {
    if (ReadJsonFile(save.file) == ParseJson(before)) {
      tool.out << "Nothing was changed.\n";
    } else {
      is_form ? SaveFormFile(save, tool) : SaveRequestFile(save, tool);
    }
  } catch (const Error& error) {
    throw Error(error.number, error.source, error.description + "\nThe draft is " + save.file);
  }
  if (tool.status == 0) {
    files::Remove(save.file);
  } else {
    tool.err << "The draft is " << save.file << ".\n";
  }
}

}  // namespace

void AddEditVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<EditOptions>();
  CLI::App* verb =
      app.add_subcommand("edit", "Open a stored scheme or form in your editor and save what you make of it");
  verb->add_option("ID", options->id, "The scheme's id, as `rebate list --status all` gives it")->required();
  verb->add_flag("--strict", options->strict, "Refuse what is only odd, too");
  AddAccountOptions(*verb, *options);
  verb->footer(
      "The editor is that of VISUAL or EDITOR. What is refused stays in the draft, whose name is told.\n"
      "Example: EDITOR=vi rebate edit 3 --dsn shop.db");
  verb->callback([options, &tool] { Edit(*options, tool); });
}

}  // namespace rebate
