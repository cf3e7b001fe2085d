// The session's dispatcher: one input line is a command or an expression.
#pragma once

#include <string>

// Carries out one line against the session's one parser; false only for "quit"
// and "exit", which end the session.
bool run_line(const std::string& line);
