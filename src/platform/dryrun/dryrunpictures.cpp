#include "platform/dryrun/dryrunpictures.h"

namespace tarvoke::platform::dryrun {

bool DryRunPictures::load(const std::string& path, PixelGrid& grid) {
    m_sink("LoadPicture " + quoted(path));
    return m_files && m_files->load(path, grid);
}

bool DryRunPictures::save(const std::string& path, const PixelGrid& grid) {
    m_sink("SavePicture " + quoted(path));
    if (!m_writes) return m_files != nullptr;
    return m_files && m_files->save(path, grid);
}

}  // namespace tarvoke::platform::dryrun
