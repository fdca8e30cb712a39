#include "app_fixture.h"

#include <QFile>

namespace tarvoke::app::testing {

void AppFixture::writeFile(const QString& name, const QByteArray& bytes) const {
    QFile file(folder.path() + "/" + name);
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
}

QByteArray AppFixture::readFile(const QString& name) const {
    QFile file(folder.path() + "/" + name);
    if (!file.open(QIODevice::ReadOnly)) return "<missing>";
    return file.readAll();
}

}  // namespace tarvoke::app::testing
