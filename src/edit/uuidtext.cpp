#include "edit/uuidtext.h"

#include <QDateTime>
#include <QRandomGenerator64>

#include <array>

QUuid createUuidV7(qint64 msecs_since_epoch, QRandomGenerator64& generator) {
    std::array<quint8, 16> bytes{};
    const quint64 ms = quint64(msecs_since_epoch);
    for (int i = 0; i < 6; ++i)
        bytes[i] = quint8(ms >> (8 * (5 - i)));
    const quint64 random_high = generator.generate();
    const quint64 random_low = generator.generate();
    for (int i = 6; i < 16; ++i) {
        const quint64 source = i < 14 ? random_high : random_low;
        bytes[i] = quint8(source >> (8 * (i % 8)));
    }
    bytes[6] = quint8((bytes[6] & 0x0f) | 0x70);
    bytes[8] = quint8((bytes[8] & 0x3f) | 0x80);
    return QUuid::fromRfc4122(QByteArrayView(bytes.data(), qsizetype(bytes.size())));
}

QString uuidText(const QUuid& uuid, UuidForm form) {
    const bool upper = form == UuidForm::StandardUpper || form == UuidForm::BracedUpper;
    const bool braced = form == UuidForm::Braced || form == UuidForm::BracedUpper;
    const char* digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    const QByteArray bytes = uuid.toRfc4122();

    QString out;
    out.reserve(38);
    if (braced) out.append(u'{');
    for (int i = 0; i < bytes.size(); ++i) {
        const auto byte = quint8(bytes.at(i));
        out.append(QLatin1Char(digits[byte >> 4]));
        out.append(QLatin1Char(digits[byte & 0x0f]));
        if (i == 3 || i == 5 || i == 7 || i == 9) out.append(u'-');
    }
    if (braced) out.append(u'}');
    return out;
}

QString newUuidText(UuidVersion version, UuidForm form, QRandomGenerator64& generator) {
    const QUuid uuid = version == UuidVersion::V7
                           ? createUuidV7(QDateTime::currentMSecsSinceEpoch(), generator)
                           : QUuid::createUuid();
    return uuidText(uuid, form);
}
