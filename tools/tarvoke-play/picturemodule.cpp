#include "picturemodule.h"

#include <cstdio>
#include <dlfcn.h>

#include "platform/qimage/module.h"
#include "programfolder.h"
#include "platform/bmpwriter.h"

namespace tarvoke::player {

PictureModule::~PictureModule() {
    // The reader's code lives in the module: it goes first.
    m_reader.reset();
    if (m_handle) dlclose(m_handle);
}

platform::Pictures* PictureModule::reader() {
    if (m_tried) return m_reader.get();
    m_tried = true;
    const std::string path = m_modulePath ? m_modulePath() : programFolder() + "/tarvoke-pictures.so";
    m_handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    const auto create = m_handle ? reinterpret_cast<platform::qimage::NewPictures>(dlsym(m_handle, platform::qimage::kNewPicturesSymbol)) : nullptr;
    if (create) m_reader.reset(create());
    else std::fprintf(stderr, "%s: cannot read pictures: %s\n", programName(), dlerror());
    return m_reader.get();
}

bool PictureModule::load(const std::string& path, platform::PixelGrid& grid) {
    grid = {};
    platform::Pictures* pictures = reader();
    return pictures && pictures->load(path, grid);
}

bool PictureModule::save(const std::string& path, const platform::PixelGrid& grid) {
    std::string error;
    return platform::saveBmpFile(path, grid, error);
}

}  // namespace tarvoke::player
