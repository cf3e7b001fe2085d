// The utility commands. Each takes the argument text of its line (the bytes after
// the first blank, unchanged) and the session's parser, and prints its result.
#pragma once

#include <string>

#include "vexa/parser.hpp"

namespace commands {

void hex(const std::string& args, vexa::parser& parser);
void unhex(const std::string& args, vexa::parser& parser);
void md5(const std::string& args, vexa::parser& parser);
void sha1(const std::string& args, vexa::parser& parser);
void sha256(const std::string& args, vexa::parser& parser);
void escape(const std::string& args, vexa::parser& parser);
void base64(const std::string& args, vexa::parser& parser);
void unbase64(const std::string& args, vexa::parser& parser);
void url_decode(const std::string& args, vexa::parser& parser);
void url_encode(const std::string& args, vexa::parser& parser);
void comma(const std::string& args, vexa::parser& parser);
void localtime(const std::string& args, vexa::parser& parser);
void gmtime(const std::string& args, vexa::parser& parser);
void uuid(const std::string& args, vexa::parser& parser);

}  // namespace commands
