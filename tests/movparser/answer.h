// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "movparser/src/mov_file_reader.h"

#include <QtCore/QString>

/// What a reader answers to a question for one number: the number, or the code of the failure.
template <class T, class... Parameter, class... Argument>
QString answer(const Tavro::MovParserLib::MovFileReader &reader,
               uint32_t (Tavro::MovParserLib::MovFileReader::*question)(T *, Parameter...) const,
               Argument... argument)
{
    T value = {};
    const uint32_t error = (reader.*question)(&value, argument...);
    return error == 0 ? QString::number(value) : QStringLiteral("0x%1").arg(error, 0, 16);
}
