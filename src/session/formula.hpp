// Formula files: ".frm" files of expressions, comments and prompt/show/print
// lines, run against the session's parser.
#pragma once

#include <string>

#include "vexa/parser.hpp"

// The text the `formula` command prints.
extern const char* formula_help;

// Runs `file` with the words of `args` bound, in order, to its prompt lines;
// prompts left without a word read a number through the line editor. False,
// with nothing done, when the file cannot be opened.
bool run_formula(const std::string& file, std::string args, vexa::parser& parser);
