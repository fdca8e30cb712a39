// The picture reader as a module of its own, loaded by the player at its
// first picture: a run that reads none never loads Qt's GUI library, whose
// loading would take most of the player's start.

#include "platform/qimage/module.h"
#include "platform/qimage/qimagepictures.h"

extern "C" __attribute__((visibility("default"))) tarvoke::platform::Pictures* tarvoke_new_pictures() {
    return new tarvoke::platform::qimage::QImagePictures();
}
