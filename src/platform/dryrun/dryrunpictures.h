#pragma once
// Picture files in a dry run: each load and save prints its line. A load is
// really done by the picture files it is given, a save only where writes
// are allowed (without files every load and save fails; without writes a
// save succeeds and writes nothing).

#include "platform/dryrun/dryrun.h"
#include "platform/pictures.h"

namespace tarvoke::platform::dryrun {

class DryRunPictures : public Pictures {
public:
    explicit DryRunPictures(LineSink sink) : m_sink(std::move(sink)) {}
    void setFiles(Pictures* files, bool writes) {
        m_files = files;
        m_writes = writes;
    }
    bool load(const std::string& path, PixelGrid& grid) override;
    bool save(const std::string& path, const PixelGrid& grid) override;

private:
    LineSink m_sink;
    Pictures* m_files = nullptr;
    bool m_writes = false;
};

}  // namespace tarvoke::platform::dryrun
