#pragma once
// The one entry of the picture module (tarvoke-pictures.so), looked up by
// name: a function with C linkage that returns a new reader and writer of
// picture files, owned by the caller.

#include "platform/pictures.h"

namespace tarvoke::platform::qimage {

inline constexpr const char* kNewPicturesSymbol = "tarvoke_new_pictures";
using NewPictures = Pictures* (*)();

}  // namespace tarvoke::platform::qimage
