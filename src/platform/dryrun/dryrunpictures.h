#pragma once
// Picture files in a dry run: each load and save prints its line and is
// really done by the picture files it is given (none: every load and save fails).

#include "platform/dryrun/dryrun.h"
#include "platform/pictures.h"

namespace tarvoke::platform::dryrun {

class DryRunPictures : public Pictures {
public:
    explicit DryRunPictures(LineSink sink) : m_sink(std::move(sink)) {}
    void setFiles(Pictures* files) { m_files = files; }
    bool load(const std::string& path, screen::PixelGrid& grid) override;
    bool save(const std::string& path, const screen::PixelGrid& grid) override;

private:
    LineSink m_sink;
    Pictures* m_files = nullptr;
};

}  // namespace tarvoke::platform::dryrun
