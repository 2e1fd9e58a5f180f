#pragma once

#include <Orv/Export.h>

#include <QByteArray>
#include <QUuid>
#include <QtEndian>

#include <cstring>

namespace Orv::Utitlity {

/// Integers, GUIDs and fixed-width fields in a `QByteArray`, in a byte order that does not depend on the machine.
///
/// Offsets and lengths are in bytes. Writers grow the array to hold what they write, zero what they skip over, and
/// touch nothing else (the GUID writer is special, see there). Readers need the bytes to be there, and no offset may be
/// negative or lead past what a byte array can hold: debug builds assert it; release builds read missing bytes (at a
/// negative offset: all of them) as zero and write nothing, and never touch memory outside the array.
///
/// With Qt 6, an array may be larger than 2 GiB: only offsets up to the largest `int` can be given, and what follows
/// stays as it is.
///
/// No state, no logging. A writer throws `std::bad_alloc` if the array cannot grow to hold the value: without enough
/// memory, and near the largest size of a byte array. Safe on distinct arrays from any thread.
class ORV_EXPORT Endian {
public:
    ///@{
    /// Writes the integer at `offset`, the least significant byte first.
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
    /// Writes the integer at `offset`, the most significant byte first.
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
    /// Reads the integer at `offset`, the least significant byte first.
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
    /// Reads the integer at `offset`, the most significant byte first.
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

    /// Writes the 16 bytes of the Windows layout of a GUID: its first three fields (4, 2 and 2 bytes) in little-endian
    /// order, then the other eight bytes as they are in RFC 4122. {00112233-4455-6677-8899-aabbccddeeff} becomes
    /// 33 22 11 00 55 44 77 66 88 99 aa bb cc dd ee ff.
    ///
    /// The array has to hold all of the 16 bytes: it is grown for the first eight only, and of the last eight those are
    /// written that fit.
    static void WriteBytesLittleEndian(const QUuid& id, QByteArray& data, int offset);
    /// The inverse.
    static QUuid ToGuidLittleEndian(const QByteArray& data, int offset);

    /// Writes `source` into a field of `length` bytes: cut, or filled up with zeros. A length of 0 or less writes
    /// nothing.
    static void StringToBytes(const QByteArray& source, QByteArray& data, int offset, int length);
    /// Reads a field of `length` bytes, zeros included: the result has that length; 0 for a negative one.
    static QByteArray BytesToString(const QByteArray& data, int offset, int length);

private:
    /// Whether `size` bytes at `offset` are in the array. A negative offset is a large unsigned one.
    static bool holds(const QByteArray& data, int offset, unsigned size)
    {
        return quint64(unsigned(offset)) + size <= quint64(data.size());
    }
    /// Makes room for `size` bytes at `offset`; false if there can be none.
    static bool grow(QByteArray& data, int offset, int size);
    /// Copies what is there of `size` bytes at `offset`.
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
