// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/text_sample_description.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace Tavro::MovParserLib {

namespace {

constexpr size_t kMaxNameLength = 127;

} // namespace

uint64_t TextSampleDescription::GetSize() const
{
    return SampleDescription::GetSize() + SizeOfFields(Fields(*this)) + CountedNameSize();
}

MovAtom::Error TextSampleDescription::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    m_textName.clear();
    MOV_READ(scope, SampleDescription::Read(buffer));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    // Subtitles of other formats share the kind of track: what does not count as a name there is
    // passed over.
    if (scope.Remaining(size) > 0) {
        uint8_t length = 0;
        MOV_READ(scope, ReadNumber(buffer, &length));
        if (length <= scope.Remaining(size))
            MOV_READ(scope, ReadText(buffer, length, &m_textName));
    }
    return scope.Finish(size);
}

MovAtom::Error TextSampleDescription::Write(FileBuffer &buffer)
{
    MOV_WRITE(SampleDescription::Write(buffer));
    MOV_WRITE(WriteFields(buffer, Fields(*this)));
    if (m_textName.empty())
        return MovAtom::ERROR_OKAY;
    MOV_WRITE(WriteNumber(buffer, static_cast<uint8_t>(m_textName.size())));
    return WriteBytes(buffer, m_textName.data(), m_textName.size());
}

void TextSampleDescription::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "TextSampleDescription");
    SampleDescription::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "DisplayFlags: %u", displayFlags);
    // Spelled so in every dump there is; programs that compare dumps rely on it.
    PrintLine(out, block.Depth(), "TextJustificiation: %d", textJustification);
    PrintLine(out, block.Depth(), "BackgroundColor: %d %d %d", backgroundColor[0],
              backgroundColor[1], backgroundColor[2]);
    PrintLine(out, block.Depth(), "DefaultTextBox: %d %d %d %d", defaultTextBox[0],
              defaultTextBox[1], defaultTextBox[2], defaultTextBox[3]);
    PrintLine(out, block.Depth(), "FontNumber: %d", fontNumber);
    PrintLine(out, block.Depth(), "FontFace: %d", fontFace);
    PrintLine(out, block.Depth(), "ForegroundColor: %d %d %d", foregroundColor[0],
              foregroundColor[1], foregroundColor[2]);
    if (m_textName.empty())
        PrintLine(out, block.Depth(), "No Textname Supplied");
    else
        PrintLine(out, block.Depth(), "Name: %s", m_textName.c_str());
}

void TextSampleDescription::SetTextName(const char *textName)
{
    const size_t length = std::strlen(textName);
    assert(length <= (4294967295U));
    assert(length <= 127);
    m_textName.assign(textName, std::min(length, kMaxNameLength));
}

uint64_t TextSampleDescription::CountedNameSize() const
{
    return m_textName.empty() ? 0 : sizeof(uint8_t) + m_textName.size();
}

std::unique_ptr<SampleDescription> TextSampleDescription::Clone() const
{
    return std::make_unique<TextSampleDescription>(*this);
}

} // namespace Tavro::MovParserLib
