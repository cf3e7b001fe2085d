// The file commands' work on a file read in blocks. Each function prints to `out`
// exactly what its command prints for the file's whole contents (base::load),
// line feed included, while memory stays bounded whatever the file's size.
#pragma once

#include <cstdio>
#include <string>

namespace streams {

// The hex digest; a file that cannot be read digests as empty contents.
void md5(const std::string& file, std::FILE* out);
void sha1(const std::string& file, std::FILE* out);
void sha256(const std::string& file, std::FILE* out);

// The contents as one C-string body; a file that cannot be read gives an empty
// line.
void escape(const std::string& file, std::FILE* out);

// The coding of the contents, printed up to the first zero byte of the result
// as puts would, unbase64's warning first. A file that cannot be opened prints
// nothing and gives false: the command then codes the argument as text.
bool base64(const std::string& file, std::FILE* out);
bool unbase64(const std::string& file, std::FILE* out);
bool url_encode(const std::string& file, std::FILE* out);
bool url_decode(const std::string& file, std::FILE* out);

}  // namespace streams
