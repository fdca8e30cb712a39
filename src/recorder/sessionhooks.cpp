#include "recorder/sessionhooks.h"

#include "recorder/windowselection.h"
#include "screen/imagefiles.h"

namespace tarvoke::recorder {

SamplerHooks sessionHooks(host::Session& session) {
    SamplerHooks hooks;
    hooks.windowSelection = [&session] {
        return windowSelection(*session.platform.windows, *session.platform.input);
    };
    hooks.captureTemp = [&session] {
        if (session.platform.screen) screen::captureTemp(session.imageTable, *session.platform.screen);
    };
    hooks.tempPixel = [&session](platform::Point point) {
        const platform::PixelGrid& capture = session.imageTable.tempCapture();
        const bool inside = point.x >= 0 && point.y >= 0 && point.x < capture.width && point.y < capture.height;
        return inside ? capture.at(point.x, point.y) : 0u;
    };
    return hooks;
}

}  // namespace tarvoke::recorder
