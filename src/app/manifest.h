#pragma once
// The side-by-side manifest: Linux has none to write, and the widgets take
// the desktop's style on their own. Called where a window initialises, so the
// start keeps its order; it writes nothing and returns false.

namespace tarvoke::app {

inline bool writeManifest() { return false; }

}  // namespace tarvoke::app
