#include "manual.h"

#include <cctype>
#include <sstream>

#include "tagwright/version.h"

namespace tagwright {
namespace {

// A line of --help as roff shows it: backslashes doubled, and a line that
// begins with "." or "'" kept from being read as a request.
std::string roffLine(const std::string& line) {
  std::string out = line.starts_with(".") || line.starts_with("'") ? "\\&" : "";
  for (char c : line) {
    if (c == '\\') {
      out += "\\e";
    } else if (c == '-') {
      out += "\\-";
    } else {
      out += c;
    }
  }
  return out;
}

std::string preformatted(const std::string& text) {
  std::string out = ".nf\n";
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) out += roffLine(line) + "\n";
  return out + ".fi\n";
}

std::vector<CLI::App*> commandsOf(CLI::App& app) {
  return app.get_subcommands([](CLI::App*) { return true; });
}

std::string optionNames(CLI::App& command) {
  std::string names;
  for (const CLI::Option* option : command.get_options()) {
    if (!option->nonpositional() || option->get_group().empty()) continue;
    for (const std::string& name : option->get_lnames()) names += " --" + name;
    for (const std::string& name : option->get_snames()) names += " -" + name;
  }
  return names.substr(1);
}

}  // namespace

std::string manPage(CLI::App& app) {
  std::string page = ".TH TAGWRIGHT 1 \"\" \"tagwright " TAGWRIGHT_VERSION "\" \"User Commands\"\n";
  page += ".SH NAME\ntagwright \\- " + roffLine(app.get_description().substr(11)) + "\n";
  page += ".SH SYNOPSIS\n";
  for (CLI::App* command : commandsOf(app)) {
    page += ".B tagwright " + command->get_name() + "\n.RI [ OPTIONS ]\n.br\n";
  }
  page += ".SH DESCRIPTION\n" + preformatted(app.help());
  for (CLI::App* command : commandsOf(app)) {
    std::string name = command->get_name();
    for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    page += ".SH \"TAGWRIGHT " + name + "\"\n";
    page += preformatted(command->help(app.get_name()));
  }
  return page;
}

std::string bashCompletion(CLI::App& app) {
  std::string commands, cases;
  for (CLI::App* command : commandsOf(app)) {
    commands += (commands.empty() ? "" : " ") + command->get_name();
    cases += "    " + command->get_name() + ") options=\"" + optionNames(*command) + "\" ;;\n";
  }
  return "# bash completion for tagwright, made by `tagwright --completion-bash`\n"
         "_tagwright() {\n"
         "  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}\n"
         "  local command=${COMP_WORDS[1]} options\n"
         "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
         "    COMPREPLY=($(compgen -W \"" +
         commands +
         " --help --version\" -- \"$current\"))\n"
         "    return\n"
         "  fi\n"
         "  case $previous in\n"
         "    --content-type) COMPREPLY=($(compgen -W \"outerMarkup innerMarkup innerText\" -- "
         "\"$current\")); return ;;\n"
         "    --element-name) COMPREPLY=($(compgen -W \"#element #comment #pi #aspcode #dtd a "
         "body div h1 h2 h3 head img li link meta p script span style table td title tr ul\" -- "
         "\"$current\")); return ;;\n"
         "    --line-ends) COMPREPLY=($(compgen -W \"crlf any\" -- \"$current\")); return ;;\n"
         "    --root|--new-content-file|--token-file) COMPREPLY=($(compgen -f -- \"$current\")); "
         "return ;;\n"
         "  esac\n"
         "  case $command in\n" +
         cases +
         "    *) return ;;\n"
         "  esac\n"
         "  if [[ $current == -* ]]; then\n"
         "    COMPREPLY=($(compgen -W \"$options\" -- \"$current\"))\n"
         "  else\n"
         "    COMPREPLY=($(compgen -f -- \"$current\"))\n"
         "  fi\n"
         "}\n"
         "complete -o filenames -F _tagwright tagwright\n";
}

}  // namespace tagwright
