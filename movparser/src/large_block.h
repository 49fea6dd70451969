// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Memory for tables that may take tens of megabytes and are filled once, front to back. Most of the
// time for that goes into the kernel handing out page by page.

#include <cstdint>

namespace Tavro::MovParserLib {

/// Has the pages of a block that is about to be filled handed out at once, large ones where they
/// fit. Small blocks are left alone; a refusal changes nothing but the time.
void PrepareLargeBlock(void *block, uint64_t size);

} // namespace Tavro::MovParserLib
