// The script for bash: tables written from the parser's, and the code that looks things up in them.

#include <fmt/core.h>

#include "host/CommandPages.h"

namespace orvane {
namespace {

constexpr char kHead[] =
    R"(# Completion of orvane for bash, written by "orvane --page bash". To try it:
#   source <(orvane --page bash)

)";

/// `values` is "none", or how many values an option takes ("one", "many") and of which kind, and
/// where the kind is "words", these.
constexpr char kCode[] = R"CODE(
_orvane_zones() { # the names in the third column
  sed -n 's/^[^#\t]*\t[^\t]*\t\([^\t]*\).*/\1/p' /usr/share/zoneinfo/zone.tab 2>/dev/null
}

_orvane_fill() { # kind, words...: puts what fits the word at the cursor into COMPREPLY
  local kind=$1 prefix= IFS=$'\n'
  shift
  case $kind in
    file | coded | folder | module) compopt -o filenames 2>/dev/null ;;
  esac
  if [ "$kind" = coded ] && [[ $cur == *=* ]]; then
    prefix=${cur%%=*}= cur=${cur#*=}
  fi
  case $kind in
    file | coded) COMPREPLY=($(compgen -P "$prefix" -f -- "$cur")) ;;
    folder) COMPREPLY=($(compgen -d -- "$cur")) ;;
    module)
      COMPREPLY=($(compgen -W "$("$orvane_program" --modules </dev/null 2>/dev/null)" -- "$cur"
        compgen -f -X '!*.so' -- "$cur"
        compgen -d -- "$cur"))
      ;;
    zone) COMPREPLY=($(compgen -W "UTC"$'\n'"$(_orvane_zones)" -- "$cur")) ;;
    words) COMPREPLY=($(compgen -W "$*" -- "$cur")) ;;
  esac
}

_orvane() {
  local words=() word values options children arguments path= kind=() left=none is_open=
  local orvane_program=${COMP_WORDS[0]/#\~/$HOME} cur
  # The shell splits words at "=" and ":"; what was one word is put together again.
  for word in "${COMP_WORDS[@]:0:COMP_CWORD+1}"; do
    if [ ${#words[@]} -gt 0 ] && [[ $word == [=:]* || $is_open ]]; then
      words[${#words[@]}-1]+=$word
    else
      words+=("$word")
    fi
    is_open=
    if [[ $word == *[=:] ]]; then is_open=1; fi
  done
  cur=${words[${#words[@]}-1]}
  unset "words[${#words[@]}-1]"
  # Which command it is, and the option that is still open for values.
  _orvane_command ""
  for word in "${words[@]:1}"; do
    if [[ $word == -?* ]]; then
      _orvane_option "$path" "${word%%=*}"
      kind=($values)
      left=${kind[0]}
      if [[ $word == --*=* ]]; then left=none; fi
    elif [ "$left" != none ]; then
      if [ "$left" = one ]; then left=none; fi
    elif [[ " $children " == *" $word "* ]]; then
      path=${path:+$path }$word
      _orvane_command "$path"
    fi
  done
  if [[ $cur == --*=* ]]; then
    _orvane_option "$path" "${cur%%=*}"
    kind=($values)
    left=${kind[0]} cur=${cur#*=}
  elif [[ $cur == -* ]]; then
    kind=(one words $options)
    left=one
  fi
  # Only what stands behind the last "=" or ":" is replaced, where the shell splits there.
  local whole=$cur
  if [ "$left" = none ]; then kind=($arguments); fi
  _orvane_fill "${kind[@]:1}"
  if [ "$left" = none ] && [ -n "$children" ]; then
    COMPREPLY+=($(compgen -W "$children" -- "$whole"))
  fi
  local last=${COMP_WORDS[COMP_CWORD]} i
  if [[ $last == [=:] ]]; then last=; fi
  if [[ $whole == *"$last" && $whole != "$last" ]]; then
    for i in "${!COMPREPLY[@]}"; do COMPREPLY[i]=${COMPREPLY[i]#"${whole%"$last"}"}; done
  fi
}

complete -F _orvane orvane
)CODE";

std::string joined(const std::vector<std::string>& words) {
  std::string result;
  for (const std::string& word : words) result += (result.empty() ? "" : " ") + word;
  return result;
}

std::string valuesOf(const OptionEntry& option) {
  const std::string many = option.takesMany ? "many " : "one ";
  switch (option.kind) {
    case ValueKind::None:
      return "none";
    case ValueKind::Text:
      return many + "text";
    case ValueKind::Words:
      return many + "words " + joined(option.words);
    case ValueKind::File:
      return many + "file";
    case ValueKind::CodedFile:
      return many + "coded";
    case ValueKind::Folder:
      return many + "folder";
    case ValueKind::Zone:
      return many + "zone";
    case ValueKind::Module:
      return many + "module";
  }
  return "none";
}

std::string optionTable(const CommandTable& table) {
  std::string code = "_orvane_option() { # command, option: sets `values`\n  case \"$1|$2\" in\n";
  for (const CommandEntry& command : table)
    for (const OptionEntry& option : command.options) {
      if (option.isPositional) continue;
      std::string names;
      for (const std::string& name : option.names)
        names += fmt::format("{}'{}|{}'", names.empty() ? "" : " | ", command.path, name);
      code += fmt::format("    {}) values='{}' ;;\n", names, valuesOf(option));
    }
  return code + "    *) values=none ;;\n  esac\n}\n\n";
}

std::string commandCases(const CommandTable& table) {
  std::string code =
      "_orvane_command() { # command: sets `options`, `children` and `arguments`\n"
      "  case \"$1\" in\n";
  for (const CommandEntry& command : table) {
    std::vector<std::string> options;
    std::string arguments = "none";
    for (const OptionEntry& option : command.options) {
      if (option.isPositional)
        arguments = valuesOf(option);
      else
        options.insert(options.end(), option.names.begin(), option.names.end());
    }
    code +=
        fmt::format("    '{}')\n      options='{}'\n      children='{}' arguments='{}'\n      ;;\n",
                    command.path, joined(options), joined(command.children), arguments);
  }
  return code + "  esac\n}\n";
}

}  // namespace

std::string bashCompletion(const CommandTable& table) {
  return kHead + optionTable(table) + commandCases(table) + kCode;
}

}  // namespace orvane
