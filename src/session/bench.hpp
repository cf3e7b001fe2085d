// The SHA-256 hash-chain benchmark and its verification.
#pragma once

#include <climits>
#include <string>

// Prints a random start string, the string reached after ten seconds of chaining,
// and the rate.
void bench();

// Recomputes the chain of "start:end" and prints the count and the rate. A
// well-formed end that is never reached gives up after `limit` steps; tests pass
// a small one.
void verify(const std::string& args, int limit = INT_MAX);
