// The Qt part of the runtime, loaded from memory at the first picture or
// message box.

#include <QApplication>

#include "app/scriptmessages.h"
#include "platform/qimage/qimagepictures.h"
#include "runtimemodule.h"

extern "C" __attribute__((visibility("default"))) tarvoke::platform::Pictures* tarvoke_new_pictures() {
    return new tarvoke::platform::qimage::QImagePictures();
}

extern "C" __attribute__((visibility("default"))) void tarvoke_runtime_show_message(int argc, char** argv, uint32_t flags,
                                                                                   const char* title, const char* text) {
    QApplication app(argc, argv);
    tarvoke::app::ScriptMessageBoxes().show(flags, title, text);
}
