// The SHA-256 hash-chain benchmark and its verification.
#pragma once

#include <string>

// Prints a random start string, the string reached after ten seconds of chaining,
// and the rate.
void bench();

// Recomputes the chain of "start:end" and prints the count and the rate. A
// well-formed end that is never reached gives up after 2,147,483,647 steps.
void verify(const std::string& args);
