#pragma once

#include <utility>
#include <vector>

#include "platform/values/types.h"

namespace rebate {

// What `--help` prints, taken apart.
struct HelpText {
  using Lines = std::vector<Text>;
  struct Item {
    Text name;
    Lines text;
  };
  struct Section {
    Text title;  // without its colon
    std::vector<Item> items;
  };

  Lines description;
  Text usage;
  std::vector<Section> sections;
  Lines footer;

  // Raises std::runtime_error where it is no help.
  static HelpText Parse(const Text& printed);

  // The names of the verbs that it lists.
  std::vector<Text> Verbs() const;
};

// The page of the manual for the program or verb of this title, such as `rebate-show`, as roff for the macros of `man`.
Text ManualPage(const Text& title, const HelpText& help, const Text& version);

}  // namespace rebate
