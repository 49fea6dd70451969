// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `sdtp`: how samples depend on each other.

#include "movparser/src/mov_full_atom.h"

#include <vector>

namespace Tavro::MovParserLib {

class SampleDependenciesAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("sdtp");

    SampleDependenciesAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    [[nodiscard]] Error AddSample(uint8_t dependency);

    std::vector<uint8_t> dependencies; ///< One byte a sample.
};

} // namespace Tavro::MovParserLib
