// ScCopyNotifications: copies notifications with all data that they point to into one block.
#include "zebstore/base/Guard.h"
#include "zebstore/exports/CopyValue.h"

#include <cstring>

namespace zebstore
{
namespace
{

/// Packs copies one after the other into a given block; without a block it only counts the bytes.
class Packer
{
public:
    explicit Packer(void* block)
        : m_next(static_cast<BYTE*>(block))
    {
    }

    template <class T>
    T* Pack(const T* source, size_t count)
    {
        if (!source || !count)
        {
            return nullptr;
        }
        return static_cast<T*>(PackBytes(source, count * sizeof(T)));
    }

    /// Binds the packer to an allocator's signature for the duration of one value copy.
    void PackValue(SPropValue& dest, const SPropValue& source)
    {
        Check(CopyValue(dest, source, AllocateHere, this), "a value cannot be copied");
    }

    size_t Size() const { return m_size; }

private:
    void* PackBytes(const void* bytes, size_t size)
    {
        void* place = Reserve(size);
        std::memcpy(place, bytes, size);
        return place;
    }

    void* Reserve(size_t size)
    {
        BYTE* place = m_next;
        const size_t padded = (size + 7) & ~size_t{7};
        m_next += padded;
        m_size += padded;
        return place;
    }

    static SCODE WINAPI AllocateHere(ULONG size, LPVOID packer, LPVOID* block)
    {
        *block = static_cast<Packer*>(packer)->Reserve(size);
        return S_OK;
    }

    BYTE* m_next;
    size_t m_size = 0;
};

SPropValue* PackValues(Packer& packer, SPropValue* values, ULONG count)
{
    SPropValue* copy = packer.Pack(values, count);
    for (ULONG i = 0; copy != nullptr && i < count; ++i)
    {
        packer.PackValue(copy[i], values[i]);
    }
    return copy;
}

void PackEntry(Packer& packer, ULONG size, LPENTRYID& entry)
{
    entry = reinterpret_cast<LPENTRYID>(packer.Pack(reinterpret_cast<const BYTE*>(entry), size));
}

void PackObject(Packer& packer, OBJECT_NOTIFICATION& object)
{
    PackEntry(packer, object.cbEntryID, object.lpEntryID);
    PackEntry(packer, object.cbParentID, object.lpParentID);
    PackEntry(packer, object.cbOldID, object.lpOldID);
    PackEntry(packer, object.cbOldParentID, object.lpOldParentID);
    if (object.lpPropTagArray != nullptr)
    {
        object.lpPropTagArray = reinterpret_cast<LPSPropTagArray>(
            packer.Pack(reinterpret_cast<const BYTE*>(object.lpPropTagArray), CbSPropTagArray(object.lpPropTagArray)));
    }
}

void PackNotification(Packer& packer, NOTIFICATION& copy)
{
    switch (copy.ulEventType)
    {
    case fnevCriticalError:
        PackEntry(packer, copy.info.err.cbEntryID, copy.info.err.lpEntryID);
        copy.info.err.lpMAPIError = nullptr;
        break;
    case fnevNewMail:
        PackEntry(packer, copy.info.newmail.cbEntryID, copy.info.newmail.lpEntryID);
        PackEntry(packer, copy.info.newmail.cbParentID, copy.info.newmail.lpParentID);
        if (copy.info.newmail.lpszMessageClass != nullptr && !(copy.info.newmail.ulFlags & MAPI_UNICODE))
        {
            copy.info.newmail.lpszMessageClass =
                packer.Pack(copy.info.newmail.lpszMessageClass, std::strlen(copy.info.newmail.lpszMessageClass) + 1);
        }
        else
        {
            copy.info.newmail.lpszMessageClass = nullptr;
        }
        break;
    case fnevObjectCreated:
    case fnevObjectDeleted:
    case fnevObjectModified:
    case fnevObjectMoved:
    case fnevObjectCopied:
    case fnevSearchComplete:
        PackObject(packer, copy.info.obj);
        break;
    case fnevTableModified:
        packer.PackValue(copy.info.tab.propIndex, copy.info.tab.propIndex);
        packer.PackValue(copy.info.tab.propPrior, copy.info.tab.propPrior);
        copy.info.tab.row.lpProps = PackValues(packer, copy.info.tab.row.lpProps, copy.info.tab.row.cValues);
        break;
    default:
        throw Error(MAPI_E_NO_SUPPORT, "a notification of this kind cannot be copied");
    }
}

} // namespace
} // namespace zebstore

SCODE WINAPI ScCopyNotifications(int count, LPNOTIFICATION notifications, LPVOID block, ULONG* size)
{
    using namespace zebstore;
    return Guarded("ScCopyNotifications", [&]
    {
        Require(count > 0 && notifications != nullptr && block != nullptr,
                "the notifications or the output pointer is null");
        Packer packer(block);
        NOTIFICATION* copies = packer.Pack(notifications, static_cast<size_t>(count));
        for (int i = 0; i < count; ++i)
        {
            PackNotification(packer, copies[i]);
        }
        if (size != nullptr)
        {
            *size = static_cast<ULONG>(packer.Size());
        }
    });
}
