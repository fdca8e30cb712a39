#pragma once
// What the player's --explain adds to a run: after a picture or colour
// search that found nothing, one line on why (the place that came closest,
// where it first differs and by how much) and a PNG of the searched part of
// the image with that place marked. The session holds no explainer unless
// asked, and the commands look for one only after a miss, so a run without
// it does no work for it.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/pictures.h"
#include "screen/area.h"
#include "screen/explain.h"

namespace tarvoke::host {

struct Call;

class Explainer {
public:
    using LineSink = std::function<void(std::string_view)>;
    // Pictures are written into folder as explain-1.png, explain-2.png ...:
    // one for each statement that misses, in the order they first miss,
    // showing its latest miss (a search in a waiting loop may miss for hours).
    Explainer(std::string folder, platform::Pictures& pictures, LineSink print)
        : m_folder(std::move(folder)), m_pictures(pictures), m_print(std::move(print)) {}

    // A picture search of the statement in hand answered False; the image is
    // its parameter 1, the sub-image its parameter 2.
    void imageMissed(const Call& call, double tolerance, screen::Area area, screen::ImageWalk walk);
    // A colour search found nothing; test: it answers False rather than
    // moving the cursor. area none: the whole image.
    void colorMissed(const Call& call, int imageParameter, int range, std::optional<screen::Area> area, bool test);

private:
    // "; explain-N.png", or why it could not be written.
    std::string picture(const Call& call, const platform::PixelGrid& grid, screen::Area shown, screen::Area mark,
                        std::optional<screen::Position> spot);

    std::string m_folder;
    platform::Pictures& m_pictures;
    LineSink m_print;
    std::unordered_map<int32_t, int> m_pictureOf;  // by statement
};

}  // namespace tarvoke::host
