// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// One number space over the error codes of all the library's classes: domain | code.

#include <cstdint>
#include <string>

namespace Tavro::MovParserLib {

/// The part of the library that a code comes from. Every value under 0x10000 means the parser.
enum ErrorDomain : uint32_t {
    kParserDomain = 1,
    kFileReaderDomain = 0x10000,
    kFileWriterDomain = 0x20000,
    kBufferDomain = 0x30000,
    kAtomDomain = 0x40000
};

/// The domain's prefix and the code's name.
std::string ErrorText(uint32_t domain, uint32_t code);

/// Prints the domain's prefix and the code's name on standard error, unless both arguments are
/// 0, and returns domain | code.
uint32_t ReportError(uint32_t domain, uint32_t code);

} // namespace Tavro::MovParserLib
