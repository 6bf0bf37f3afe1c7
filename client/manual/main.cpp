// Writes the pages of the manual into a folder: that of the tool and one for each verb.
#include <fstream>
#include <iostream>

#include "client/manual/manual_page.h"
#include "client/tool.h"
#include "platform/files/files.h"

namespace rebate {
namespace {

Text Output(std::vector<const char*> arguments) {
  std::istringstream in;
  std::ostringstream out;
  std::ostringstream err;
  Tool tool{in, out, err};
  arguments.insert(arguments.begin(), "rebate");
  if (RunTool(static_cast<int>(arguments.size()), arguments.data(), tool) != 0) throw std::runtime_error(err.str());
  return out.str();
}

// The page of a verb, whose words these are, and those of the verbs in it.
void WritePages(const std::vector<Text>& verb, const std::filesystem::path& folder, const Text& version) {
  std::vector<const char*> arguments;
  Text title = "rebate";
  for (const Text& word : verb) {
    arguments.push_back(word.c_str());
    title += "-" + word;
  }
  arguments.push_back("--help");
  const HelpText help = HelpText::Parse(Output(arguments));
  std::ofstream page(folder / (title + ".1"), std::ios::binary);
  page << ManualPage(title, help, version);
  if (!page.flush()) throw std::runtime_error("Can't write " + title + ".1");
  for (const Text& inner : help.Verbs()) {
    std::vector<Text> words = verb;
    words.push_back(inner);
    WritePages(words, folder, version);
  }
}

}  // namespace
}  // namespace rebate

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::cerr << "usage: rebate_manual FOLDER\n";
    return 2;
  }
  std::filesystem::create_directories(argv[1]);
  const rebate::Text version = rebate::Output({"--version"});
  rebate::WritePages({}, argv[1], version.substr(0, version.find('\n')));
  return 0;
} catch (const std::exception& error) {
  std::cerr << "rebate_manual: " << error.what() << '\n';
  return 1;
}
