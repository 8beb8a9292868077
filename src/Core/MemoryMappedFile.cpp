// SPDX-License-Identifier: MIT
#include "MemoryMappedFile.h"

#include <QFileInfo>

namespace Harrow::Vrk
{

MemoryMappedFile::MemoryMappedFile(const QString& path) : _file(path)
{
    // Asked first, since opening a pipe waits for its other end.
    if (QFileInfo(path).isFile() && _file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        _size = static_cast<quint64>(_file.size());
}

MemoryMappedFile::~MemoryMappedFile() = default; // the mappings go with _file

quint64 MemoryMappedFile::size() const
{
    return _size;
}

void* MemoryMappedFile::get(quint64 offset, quint64 length)
{
    if (!isWithin(offset, length, _size))
        return nullptr;
    const auto presentSize = static_cast<quint64>(_file.size());
    if (!isWithin(offset, length, presentSize))
        return nullptr;
    if (_access == Access::eUndecided)
        decideAccess(presentSize);
    switch (_access)
    {
    case Access::eWhole:
        return _whole + offset;
    case Access::eRanges:
        return map(offset, length);
    default:
        return nullptr;
    }
}

void MemoryMappedFile::release(void* pointer)
{
    if (_access == Access::eRanges && pointer)
        _file.unmap(static_cast<unsigned char*>(pointer));
}

void MemoryMappedFile::decideAccess(quint64 presentSize)
{
    if (_file.handle() == -1)
    {
        // Qt maps its resources onto their read-only place in the program, whatever is asked for.
        _contents = _file.readAll();
        if (static_cast<quint64>(_contents.size()) == _size)
            _whole = reinterpret_cast<unsigned char*>(_contents.data());
        _access = _whole ? Access::eWhole : Access::eNone;
        return;
    }
    if (presentSize >= _size)
        _whole = map(0, _size);
    _access = _whole ? Access::eWhole : Access::eRanges;
}

unsigned char* MemoryMappedFile::map(quint64 offset, quint64 length)
{
    return _file.map(static_cast<qint64>(offset), static_cast<qint64>(length), QFileDevice::MapPrivateOption);
}

} // namespace Harrow::Vrk
