#pragma once

#include <QString>
#include <QUuid>

class QRandomGenerator64;

// Same numbering as the UuidType setting: 0 random, 1 time-ordered.
enum class UuidVersion : int {
    V4 = 0,
    V7 = 1,
};

// The four text forms offered by "Fill Selected Cells with UUID/GUID".
enum class UuidForm : int {
    Standard = 0,      // b1b5cb6b-346b-49f4-9843-f5116e039e5a
    StandardUpper = 1, // B1B5CB6B-346B-49F4-9843-F5116E039E5A
    Braced = 2,        // {b1b5cb6b-346b-49f4-9843-f5116e039e5a}
    BracedUpper = 3,   // {B1B5CB6B-346B-49F4-9843-F5116E039E5A}
};

// Time-ordered UUID: the first 48 bits are the milliseconds since the epoch,
// big-endian, the rest random apart from the version and variant bits.
QUuid createUuidV7(qint64 msecs_since_epoch, QRandomGenerator64& generator);

QString uuidText(const QUuid& uuid, UuidForm form);

// A fresh UUID as text: v4 from QUuid, v7 from the clock and `generator`.
QString newUuidText(UuidVersion version, UuidForm form, QRandomGenerator64& generator);
