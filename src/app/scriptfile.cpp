#include "app/scriptfile.h"

namespace tarvoke::app {

namespace {

// Length of the valid UTF-8 sequence at i (shortest form, no surrogates,
// at most U+10FFFF), or 0.
int validSequenceAt(const QByteArray& bytes, qsizetype i) {
    const auto byte = [&](qsizetype k) { return static_cast<unsigned char>(bytes[k]); };
    const unsigned char lead = byte(i);
    if (lead < 0x80) return 1;
    int length = 0;
    unsigned char low = 0x80, high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) length = 2;
    else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else
        return 0;
    if (i + length > bytes.size()) return 0;
    if (byte(i + 1) < low || byte(i + 1) > high) return 0;
    for (int k = 2; k < length; ++k)
        if (byte(i + k) < 0x80 || byte(i + k) > 0xBF) return 0;
    return length;
}

}  // namespace

QString decodeScriptBytes(const QByteArray& raw) {
    QByteArray bytes = raw;
    bytes.replace("\r\n", "\n");
    QString text;
    text.reserve(bytes.size());
    qsizetype runStart = 0;  // start of the current run of valid UTF-8
    qsizetype i = 0;
    while (i < bytes.size()) {
        const int length = validSequenceAt(bytes, i);
        if (length > 0) {
            i += length;
            continue;
        }
        text += QString::fromUtf8(bytes.constData() + runStart, i - runStart);
        text += QChar(static_cast<unsigned char>(bytes[i]));
        runStart = ++i;
    }
    text += QString::fromUtf8(bytes.constData() + runStart, bytes.size() - runStart);
    return text;
}

QByteArray encodeScriptText(const QString& text) { return text.toUtf8(); }

}  // namespace tarvoke::app

#include <QFile>
#include <sys/stat.h>

#include "app/dialogs.h"
#include "app/filesave.h"
#include "app/paths.h"
#include "platform/fileread.h"

namespace tarvoke::app {

std::optional<QString> readScriptFile(const std::string& path) {
    platform::ReadLimits limits;
    limits.maxBytes = platform::kMaxScriptBytes;
    const platform::ReadResult read = platform::readRegularFile(path, limits);
    if (!read) return std::nullopt;
    return decodeScriptBytes(QByteArray::fromStdString(read.bytes));
}

bool saveScriptFile(Dialogs& dialogs, const std::string& path, const QString& text) {
    const QByteArray bytes = encodeScriptText(text);
    const auto error = writeFileReplacing(path, std::string_view(bytes.constData(), bytes.size()));
    if (!error) return true;
    dialogs.tell("Tarvoke", "The script could not be saved: " + QString::fromLocal8Bit(*error),
                 Dialogs::Icon::Stop);
    return false;
}

bool mayReplace(Dialogs& dialogs, const std::string& path) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0) return true;
    return dialogs.askYesNo("Confirm Save As", QFile::decodeName(QByteArray::fromStdString(path)) +
                                                   " already exists.\nDo you want to replace it?");
}

bool offerToSave(Dialogs& dialogs, const std::function<bool()>& save) {
    switch (dialogs.askSave("Tarvoke", "The script has been changed. Do you want to save the changes?")) {
    case Dialogs::SaveChoice::Save: return save();
    case Dialogs::SaveChoice::Discard: return true;
    case Dialogs::SaveChoice::Cancel: break;
    }
    return false;
}

std::string localPath(const QString& path) { return QFile::encodeName(path).toStdString(); }

QString displayFileName(const std::string& path) { return QFile::decodeName(QByteArray::fromStdString(fileNameOf(path))); }

}  // namespace tarvoke::app
