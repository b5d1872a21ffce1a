// Manual page and shell completion; see help_pages.h.
#include "help_pages.h"

#include <cstdio>
#include <vector>

namespace vidproc::tool {
namespace {

std::vector<const CLI::App*> Commands(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

/// Text for troff: no line begins a request, and hyphens can be copied.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char letter : text) {
    if (letter == '-' || letter == '\\') escaped += '\\';
    escaped += letter;
    if (letter == '\n') escaped += "\\&";
  }
  return escaped;
}

void PrintManOptions(const CLI::App& app) {
  for (const CLI::Option* option : app.get_options()) {
    const std::string type = option->get_type_name();
    std::printf(".TP\n.B %s", Escaped(option->get_name(option->get_positional(), true)).c_str());
    if (!type.empty() && option->get_items_expected_max() > 0) std::printf(" \\fI%s\\fP", Escaped(type).c_str());
    std::printf("\n%s\n", Escaped(option->get_description()).c_str());
  }
}

void PrintMan(const CLI::App& app) {
  std::printf(".TH VIDPROC 1\n.SH NAME\nvidproc \\- %s\n", Escaped(app.get_description()).c_str());
  std::printf(".SH SYNOPSIS\n.B vidproc\n.I COMMAND\n.RI [ OPTION ]...\n.SH DESCRIPTION\n.nf\n%s\n.fi\n",
              Escaped(app.get_footer()).c_str());
  std::printf(".SH OPTIONS\n");
  PrintManOptions(app);
  const auto print = [](const CLI::App& command, const std::string& name) {
    std::printf(".SH \"vidproc %s\"\n%s.\n", name.c_str(), Escaped(command.get_description()).c_str());
    PrintManOptions(command);
  };
  for (const CLI::App* command : Commands(app)) {
    print(*command, command->get_name());
    for (const CLI::App* inner : Commands(*command)) print(*inner, command->get_name() + " " + inner->get_name());
  }
}

std::string OptionNames(const CLI::App& app) {
  std::string names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names += (names.empty() ? "--" : " --") + name;
  }
  return names;
}

std::string CommandNames(const CLI::App& app) {
  std::string names;
  for (const CLI::App* command : Commands(app)) names += (names.empty() ? "" : " ") + command->get_name();
  return names;
}

void PrintBash(const CLI::App& app) {
  std::printf("# bash completion for vidproc\n_vidproc() {\n  local words\n");
  std::printf("  case \"$COMP_CWORD ${COMP_WORDS[1]} ${COMP_WORDS[2]}\" in\n");
  std::printf("    '1 '*) words='%s %s' ;;\n", CommandNames(app).c_str(), OptionNames(app).c_str());
  for (const CLI::App* command : Commands(app)) {
    const char* name = command->get_name().c_str();
    const std::string innerNames = CommandNames(*command);
    std::printf("    %s' %s '*) words='%s' ;;\n", innerNames.empty() ? "*" : "2", name,
                (innerNames.empty() ? OptionNames(*command) : innerNames).c_str());
    for (const CLI::App* inner : Commands(*command)) {
      std::printf("    *' %s %s') words='%s' ;;\n", name, inner->get_name().c_str(), OptionNames(*inner).c_str());
    }
  }
  std::printf("    *) words= ;;\n  esac\n");
  std::printf("  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\")\n}\n");
  std::printf("complete -o default -F _vidproc vidproc\n");
}

}  // namespace

void AddHelpPages(CLI::App& app, std::string& page) {
  CLI::App* help = app.add_subcommand("help", "Print the manual page or the completion of a shell")->group("");
  help->add_option("PAGE", page, "man or bash")->required()->check(CLI::IsMember({"man", "bash"}));
}

void PrintHelpPage(const CLI::App& app, const std::string& page) { page == "man" ? PrintMan(app) : PrintBash(app); }

}  // namespace vidproc::tool
