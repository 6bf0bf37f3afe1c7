#include "client/line_editor.h"

// A console edits lines and keeps their history by itself, and scrolls back.
namespace rebate {

bool HasLineEditor() {
  return false;
}

std::optional<Text> EditLine(const Text&) {
  return std::nullopt;
}

bool ShowPages(const Text&) {
  return false;
}

}  // namespace rebate
