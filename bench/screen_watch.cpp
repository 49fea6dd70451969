// SPDX-License-Identifier: GPL-3.0-or-later
// Reads the numbers of a film's pictures off the screen and reports how many came and how evenly.
// The film shows them in its middle, in Gray code between two bars of magenta (bench/films.py); one
// row through the middle of the window that plays it is read, which costs next to nothing.
//
//   bench_screen_watch WIDTH HEIGHT SECONDS    of the window, and from the first picture on
#include <xcb/xcb.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <set>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kBits = 10;
constexpr int kRowWidth = 900; // the number at any projection, and more
constexpr auto kPollPeriod = std::chrono::milliseconds(6);
constexpr auto kPatience = std::chrono::seconds(60); // until the first picture

template <class Reply> using Answer = std::unique_ptr<Reply, decltype(&std::free)>;

template <class Reply> Answer<Reply> answer(Reply *reply)
{
    return Answer<Reply>(reply, &std::free);
}

struct Place
{
    int16_t x = 0;
    int16_t y = 0;
};

/// The middle of the first window of a size below `window` that is on the screen.
std::optional<Place> findMiddle(xcb_connection_t *x, xcb_window_t window, xcb_window_t root,
                                int width, int height)
{
    const auto geometry = answer(xcb_get_geometry_reply(x, xcb_get_geometry(x, window), nullptr));
    const auto attributes =
        answer(xcb_get_window_attributes_reply(x, xcb_get_window_attributes(x, window), nullptr));
    if (!geometry || !attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
        return std::nullopt;
    if (geometry->width == width && geometry->height == height) {
        const auto corner = answer(xcb_translate_coordinates_reply(
            x, xcb_translate_coordinates(x, window, root, 0, 0), nullptr));
        if (corner)
            return Place{static_cast<int16_t>(corner->dst_x + width / 2),
                         static_cast<int16_t>(corner->dst_y + height / 2)};
    }
    const auto tree = answer(xcb_query_tree_reply(x, xcb_query_tree(x, window), nullptr));
    const int children = tree ? xcb_query_tree_children_length(tree.get()) : 0;
    for (int i = children; i-- > 0;) { // the topmost one first
        if (const auto middle =
                findMiddle(x, xcb_query_tree_children(tree.get())[i], root, width, height))
            return middle;
    }
    return std::nullopt;
}

enum class Color {
    Black,
    White,
    Magenta,
    Other
};

/// Of the i-th pixel of a row, each as blue, green, red and nothing.
Color colorOf(const uint8_t *row, int i)
{
    const uint8_t *pixel = row + 4 * static_cast<ptrdiff_t>(i);
    const bool isDark = std::max({pixel[0], pixel[1], pixel[2]}) < 100;
    const bool isLight = std::min({pixel[0], pixel[1], pixel[2]}) > 156;
    const bool isMagenta = std::min(pixel[0], pixel[2]) > 140 && pixel[1] < 100;
    return isDark   ? Color::Black
        : isLight   ? Color::White
        : isMagenta ? Color::Magenta
                    : Color::Other;
}

/// The number in a row of pixels; nothing where there is none, or only half of one.
std::optional<int> readNumber(const uint8_t *row, int width)
{
    // From the middle, which lies between two bits, to the bars on both sides.
    const auto isBar = [row](int i) { return colorOf(row, i) == Color::Magenta; };
    int left = width / 2;
    int right = width / 2;
    while (left >= 0 && !isBar(left))
        --left;
    while (right < width && !isBar(right))
        ++right;
    if (left < 0 || right == width || right - left < 2 * kBits)
        return std::nullopt;
    unsigned code = 0;
    for (int bit = 0; bit < kBits; ++bit) {
        const int i = left + (right - left) * (2 * bit + 1) / (2 * kBits);
        const Color color = colorOf(row, i);
        if (color != Color::Black && color != Color::White)
            return std::nullopt;
        code = code << 1 | (color == Color::White ? 1U : 0U);
    }
    unsigned number = 0;
    for (; code != 0; code >>= 1)
        number ^= code;
    return static_cast<int>(number);
}

/// When pictures were seen for the first time.
class Log
{
public:
    void see(std::optional<int> number, Clock::time_point now)
    {
        if (!m_polls.empty() || number)
            m_polls.push_back(now);
        if (number && m_seen.insert(*number).second)
            m_pictures.push_back(now);
    }

    bool isEmpty() const { return m_pictures.empty(); }

    Clock::time_point begin() const { return m_pictures.front(); }

    void report(Clock::time_point end) const
    {
        std::vector<Clock::time_point> pictures = m_pictures;
        pictures.push_back(end); // a film that stands still to the end has a gap there
        const std::vector<double> gaps = gapsOf(pictures);
        std::printf(
            "{\"pictures\": %zu, \"largest_gap_s\": %.3f, \"p99_gap_s\": %.3f,"
            " \"largest_poll_s\": %.3f}\n",
            m_pictures.size(), gaps.back(), gaps[(gaps.size() - 1) * 99 / 100],
            gapsOf(m_polls).back());
    }

private:
    /// The shortest first.
    static std::vector<double> gapsOf(const std::vector<Clock::time_point> &times)
    {
        std::vector<double> gaps = {0};
        for (size_t i = 1; i < times.size(); ++i)
            gaps.push_back(std::chrono::duration<double>(times[i] - times[i - 1]).count());
        std::sort(gaps.begin(), gaps.end());
        return gaps;
    }

    std::set<int> m_seen;
    std::vector<Clock::time_point> m_pictures;
    std::vector<Clock::time_point> m_polls;
};

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 4) {
        std::fputs("usage: bench_screen_watch WIDTH HEIGHT SECONDS\n", stderr);
        return 2;
    }
    const int width = std::atoi(argv[1]);
    const int height = std::atoi(argv[2]);
    const auto measured = std::chrono::seconds(std::atoi(argv[3]));
    xcb_connection_t *x = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(x)) {
        std::fputs("bench_screen_watch: there is no display\n", stderr);
        return 1;
    }
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(x)).data;
    const Clock::time_point begun = Clock::now();
    std::optional<Place> middle;
    Log log;
    for (Clock::time_point next = begun;; next = std::max(next + kPollPeriod, Clock::now())) {
        std::this_thread::sleep_until(next);
        const Clock::time_point now = Clock::now();
        if (log.isEmpty() ? now - begun > kPatience : now - log.begin() >= measured)
            break;
        // Until it plays, the window may come, move and change its size.
        if (log.isEmpty())
            middle = findMiddle(x, screen->root, screen->root, width, height);
        if (!middle)
            continue;
        const auto image = answer(
            xcb_get_image_reply(x,
                                xcb_get_image(x, XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root,
                                              static_cast<int16_t>(middle->x - kRowWidth / 2),
                                              middle->y, kRowWidth, 1, ~0U),
                                nullptr));
        std::optional<int> number;
        if (image && xcb_get_image_data_length(image.get()) >= 4 * kRowWidth)
            number = readNumber(xcb_get_image_data(image.get()), kRowWidth);
        log.see(number, Clock::now());
    }
    xcb_disconnect(x);
    if (log.isEmpty()) {
        std::fputs("bench_screen_watch: no number came\n", stderr);
        return 1;
    }
    log.report(log.begin() + measured);
    return 0;
}
