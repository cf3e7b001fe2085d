// The three digests the commands offer; each returns the raw digest bytes, which
// base::hex turns into text.
#pragma once

#include "base/md5.hpp"
#include "base/sha1.hpp"
#include "base/sha256.hpp"
