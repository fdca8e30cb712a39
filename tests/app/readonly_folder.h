#pragma once
// Makes a folder refuse new files, also for root (by the immutable flag),
// and undoes it at the end of the scope.

#include <QFile>
#include <QProcess>
#include <QString>
#include <unistd.h>

namespace tarvoke::app::testing {

class ReadOnlyFolder {
public:
    explicit ReadOnlyFolder(const QString& path) : m_path(path) {
        if (::geteuid() == 0)
            m_ok = QProcess::execute("chattr", {"+i", path}) == 0;
        else
            m_ok = QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner);
    }
    ~ReadOnlyFolder() {
        if (::geteuid() == 0)
            QProcess::execute("chattr", {"-i", m_path});
        else
            QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    bool ok() const { return m_ok; }

private:
    QString m_path;
    bool m_ok = false;
};

}  // namespace tarvoke::app::testing
