#include <iostream>
#include <vector>

#include "client/console.h"
#include "client/tool.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  const rebate::Console console;
  rebate::Tool tool{std::cin, std::cout, std::cerr, console.width(), console.errors_are_seen(), console.can_ask()};
  const std::vector<rebate::Text> arguments = rebate::TakeArguments(argc, argv);
  std::vector<const char*> texts;
  for (const rebate::Text& argument : arguments) texts.push_back(argument.c_str());
  return rebate::RunTool(static_cast<int>(texts.size()), texts.data(), tool);
}
