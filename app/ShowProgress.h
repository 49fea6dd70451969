// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How a show moves through its list, and what becomes of an entry that cannot be shown: a slide
// show that nobody watches over must not wait for an answer to a message.

/// Knows the list only by its size. A plain value.
class ShowProgress
{
public:
    enum class Verdict {
        Tell, ///< the user asked for this very entry
        PassOver, ///< the show goes on with the next one
        GiveUp, ///< none of the list can be shown
    };

    /// A list begins. \a found: its entries were found in a folder or a playlist file, instead of
    /// being named one by one.
    void begin(bool found)
    {
        *this = {};
        m_found = found;
    }

    /// The next entry is tried: 1 forwards, -1 backwards; \a automatic unless the user asked.
    void step(int direction, bool automatic)
    {
        m_direction = direction;
        m_automatic = automatic;
    }

    /// The entry is seen or heard.
    void shown()
    {
        m_failures = 0;
        m_anyShown = true;
    }

    /// The entry cannot be shown. \a isLast: the show ends behind it by itself.
    Verdict fail(int listSize, bool isLast)
    {
        if (!m_found && !m_automatic)
            return Verdict::Tell;
        ++m_failures;
        return m_failures >= listSize || (isLast && !m_anyShown) ? Verdict::GiveUp
                                                                 : Verdict::PassOver;
    }

    int direction() const { return m_direction; }

    bool isAutomatic() const { return m_automatic; }

private:
    bool m_found = false;
    bool m_automatic = false;
    int m_direction = 1;
    int m_failures = 0; // one after the other
    bool m_anyShown = false;
};
