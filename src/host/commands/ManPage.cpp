// SPDX-License-Identifier: Apache-2.0
#include "host/commands/ManPage.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace host {
namespace {

// As text, whatever man makes of backslashes, dashes and dots at a line's begin.
std::string Plain(const std::string& text) {
  std::string plain;
  for (const char c : text) {
    if (c == '\\') {
      plain += "\\e";
    } else if (c == '-') {
      plain += "\\-";
    } else {
      const bool isCommand = (c == '.' || c == '\'') && (plain.empty() || plain.back() == '\n');
      plain += isCommand ? std::string("\\&") + c : std::string(1, c);
    }
  }
  return plain;
}

std::string Bold(const std::string& text) {
  return "\\fB" + Plain(text) + "\\fR";
}

std::string Upper(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

std::string Head(const std::string& page, const std::string& about) {
  return ".TH " + Upper(Plain(page)) + " 1 \"\" \"viewctl " VIEWCTL_VERSION "\" \"\"\n.SH NAME\n" + Plain(page) +
         " \\- " + Plain(about) + "\n";
}

std::string Entry(const std::string& head, const std::string& text) {
  return ".TP\n" + head + "\n" + Plain(text) + "\n";
}

std::string ValueOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const bool takesValue = option.get_items_expected_max() > 0 && !type.empty();
  const std::string word = type.substr(0, type.find(':'));
  return takesValue ? " \\fI" + Plain(word) + "\\fR" : "";
}

std::string OptionEntry(const CLI::Option& option) {
  std::string head;
  for (const std::string& name : option.get_snames()) head += Bold("-" + name) + ", ";
  for (const std::string& name : option.get_lnames()) head += Bold("--" + name) + ", ";
  head.resize(head.size() - 2);
  const std::string otherwise = option.get_default_str();
  return Entry(head + ValueOf(option), option.get_description() + (otherwise.empty() ? "" : " (" + otherwise + ")"));
}

std::string Options(const CLI::App& app, const std::string& title, const CLI::Option* but) {
  std::string text;
  for (const CLI::Option* option : app.get_options()) {
    if (!option->get_positional() && option != but) text += OptionEntry(*option);
  }
  return text.empty() ? "" : ".SH " + title + "\n" + text;
}

std::string ArgumentText(const CLI::Option& option) {
  const std::string name = option.get_name(true);
  const std::string many = option.get_items_expected_max() > 1 ? name + "..." : name;
  return option.get_required() ? many : "[" + many + "]";
}

std::string Synopsis(const std::string& program, const CLI::App& app, const std::string& rest) {
  std::string text = ".SH SYNOPSIS\n" + Bold(program) + " [\\fIOPTIONS\\fR]";
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_positional()) text += " \\fI" + Plain(ArgumentText(*option)) + "\\fR";
  }
  return text + rest + "\n";
}

std::string Arguments(const CLI::App& app) {
  std::string text;
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_positional())
      text += Entry("\\fI" + Plain(option->get_name(true)) + "\\fR", option->get_description());
  }
  return text.empty() ? "" : ".SH ARGUMENTS\n" + text;
}

// As it stands, line by line.
std::string Footer(const CLI::App& app) {
  const std::string text = app.get_footer();
  return text.empty() ? "" : ".SH NOTES\n.nf\n" + Plain(text) + "\n.fi\n";
}

std::string Commands(const CLI::App& app) {
  std::string text = ".SH COMMANDS\n";
  for (const CLI::App* command : app.get_subcommands({})) {
    if (!command->get_group().empty()) text += Entry(Bold(command->get_name()), command->get_description());
  }
  return text;
}

}  // namespace

std::string ManPageOf(const CLI::App& app) {
  return Head("viewctl", app.get_description()) + Synopsis("viewctl", app, " \\fICOMMAND\\fR ...") + Commands(app) +
         Options(app, "OPTIONS", nullptr) + Footer(app);
}

std::string ManPageOf(const CLI::App& app, const CLI::App& command) {
  return Head("viewctl-" + command.get_name(), command.get_description()) +
         Synopsis("viewctl " + command.get_name(), command, "") + Arguments(command) +
         Options(command, "OPTIONS", nullptr) + Options(app, "OPTIONS OF EVERY COMMAND", app.get_help_ptr()) +
         Footer(command) + ".SH SEE ALSO\n\\fBviewctl\\fR(1)\n";
}

}  // namespace host
