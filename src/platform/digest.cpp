#include "platform/digest.h"

#include <QByteArray>
#include <QCryptographicHash>

namespace kelvo {

std::string Sha256Of(std::string_view bytes)
{
    const QByteArray data = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
    return QCryptographicHash::hash(data, QCryptographicHash::Sha256).toHex().toStdString();
}

}  // namespace kelvo
