#pragma once

#include <Orv/Export.h>

#include <QByteArray>
#include <QUuid>
#include <QtEndian>

#include <cstring>

namespace Orv::Utitlity {

/// Reads and writes integers, GUIDs and fixed-width fields in a `QByteArray`, in an explicit byte order.
///
/// Offsets and lengths are in bytes. Writers grow the array as needed and fill skipped bytes with zeros (the GUID
/// writer differs: see there). Preconditions: the bytes to read exist, and no offset is negative or beyond the maximum
/// size of a byte array. Debug builds assert this. Release builds read missing bytes (with a negative offset, all
/// bytes) as zero, write nothing at invalid offsets, and never access memory outside the array.
///
/// With Qt 6, an array may be larger than 2 GiB. Only offsets up to the largest `int` are supported; the bytes beyond
/// are not changed.
///
/// Stateless; does not log. A writer throws `std::bad_alloc` if the array cannot grow, for lack of memory or near the
/// maximum size of a byte array. Thread-safe on distinct arrays.
class ORV_EXPORT Endian {
public:
    ///@{
    /// Writes an integer at `offset`, least significant byte first.
    static void WriteBytesLittleEndian(unsigned short value, QByteArray& data, int offset)
    {
        write(qToLittleEndian(value), data, offset);
    }
    static void WriteBytesLittleEndian(unsigned int value, QByteArray& data, int offset)
    {
        write(qToLittleEndian(value), data, offset);
    }
    static void WriteBytesLittleEndian(unsigned long long value, QByteArray& data, int offset)
    {
        write(qToLittleEndian(value), data, offset);
    }
    static void WriteBytesLittleEndian(short value, QByteArray& data, int offset)
    {
        write(qToLittleEndian(value), data, offset);
    }
    static void WriteBytesLittleEndian(int value, QByteArray& data, int offset)
    {
        write(qToLittleEndian(value), data, offset);
    }
    static void WriteBytesLittleEndian(long long value, QByteArray& data, int offset)
    {
        write(qToLittleEndian(value), data, offset);
    }
    ///@}

    ///@{
    /// Writes an integer at `offset`, most significant byte first.
    static void WriteBytesBigEndian(unsigned short value, QByteArray& data, int offset)
    {
        write(qToBigEndian(value), data, offset);
    }
    static void WriteBytesBigEndian(unsigned int value, QByteArray& data, int offset)
    {
        write(qToBigEndian(value), data, offset);
    }
    static void WriteBytesBigEndian(unsigned long long value, QByteArray& data, int offset)
    {
        write(qToBigEndian(value), data, offset);
    }
    static void WriteBytesBigEndian(short value, QByteArray& data, int offset)
    {
        write(qToBigEndian(value), data, offset);
    }
    static void WriteBytesBigEndian(int value, QByteArray& data, int offset)
    {
        write(qToBigEndian(value), data, offset);
    }
    static void WriteBytesBigEndian(long long value, QByteArray& data, int offset)
    {
        write(qToBigEndian(value), data, offset);
    }
    ///@}

    ///@{
    /// Reads an integer at `offset`, least significant byte first.
    static unsigned short ToUInt16LittleEndian(const QByteArray& data, int offset)
    {
        return qFromLittleEndian(read<unsigned short>(data, offset));
    }
    static unsigned int ToUInt32LittleEndian(const QByteArray& data, int offset)
    {
        return qFromLittleEndian(read<unsigned int>(data, offset));
    }
    static unsigned long long ToUInt64LittleEndian(const QByteArray& data, int offset)
    {
        return qFromLittleEndian(read<unsigned long long>(data, offset));
    }
    static short ToInt16LittleEndian(const QByteArray& data, int offset)
    {
        return qFromLittleEndian(read<short>(data, offset));
    }
    static int ToInt32LittleEndian(const QByteArray& data, int offset)
    {
        return qFromLittleEndian(read<int>(data, offset));
    }
    static long long ToInt64LittleEndian(const QByteArray& data, int offset)
    {
        return qFromLittleEndian(read<long long>(data, offset));
    }
    ///@}

    ///@{
    /// Reads an integer at `offset`, most significant byte first.
    static unsigned short ToUInt16BigEndian(const QByteArray& data, int offset)
    {
        return qFromBigEndian(read<unsigned short>(data, offset));
    }
    static unsigned int ToUInt32BigEndian(const QByteArray& data, int offset)
    {
        return qFromBigEndian(read<unsigned int>(data, offset));
    }
    static unsigned long long ToUInt64BigEndian(const QByteArray& data, int offset)
    {
        return qFromBigEndian(read<unsigned long long>(data, offset));
    }
    static short ToInt16BigEndian(const QByteArray& data, int offset)
    {
        return qFromBigEndian(read<short>(data, offset));
    }
    static int ToInt32BigEndian(const QByteArray& data, int offset) { return qFromBigEndian(read<int>(data, offset)); }
    static long long ToInt64BigEndian(const QByteArray& data, int offset)
    {
        return qFromBigEndian(read<long long>(data, offset));
    }
    ///@}

    /// Writes a GUID in the 16-byte Windows layout: its first three fields (4, 2 and 2 bytes) in little-endian order,
    /// then the other eight bytes as in RFC 4122. {00112233-4455-6677-8899-aabbccddeeff} becomes 33 22 11 00 55 44 77
    /// 66 88 99 aa bb cc dd ee ff.
    ///
    /// The array should already have room for all 16 bytes: it grows for the first eight only, and the last eight are
    /// truncated at its end.
    static void WriteBytesLittleEndian(const QUuid& id, QByteArray& data, int offset);
    /// Reads a GUID in the Windows layout.
    static QUuid ToGuidLittleEndian(const QByteArray& data, int offset);

    /// Writes `source` into a field of `length` bytes, truncated or padded with zeros. Does nothing if `length` is 0 or
    /// negative.
    static void StringToBytes(const QByteArray& source, QByteArray& data, int offset, int length);
    /// Returns a field of `length` bytes, including zeros; empty if `length` is negative.
    static QByteArray BytesToString(const QByteArray& data, int offset, int length);

private:
    /// Whether the array has `size` bytes at `offset`. A negative offset becomes a large unsigned number.
    static bool holds(const QByteArray& data, int offset, unsigned size)
    {
        return quint64(unsigned(offset)) + size <= quint64(data.size());
    }
    /// Makes room for `size` bytes at `offset`. False if the range is invalid.
    static bool grow(QByteArray& data, int offset, int size);
    /// Copies the existing bytes of the range of `size` bytes at `offset` to `target`.
    static void readOutside(const QByteArray& data, int offset, void* target, int size);

    template <class T> static void write(T value, QByteArray& data, int offset)
    {
        if (Q_LIKELY(holds(data, offset, sizeof value)) || grow(data, offset, sizeof value))
            std::memcpy(data.data() + offset, &value, sizeof value);
    }

    template <class T> static T read(const QByteArray& data, int offset)
    {
        if (Q_LIKELY(holds(data, offset, sizeof(T))))
            return qFromUnaligned<T>(data.constData() + offset);
        T value = 0;
        readOutside(data, offset, &value, sizeof value);
        return value;
    }
};

} // namespace Orv::Utitlity
