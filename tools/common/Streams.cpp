#include "tools/common/Streams.h"

#include "tools/common/Failure.h"

namespace zeb::tools
{
namespace
{

constexpr size_t PieceSize = size_t(1) << 16;

} // namespace

CComPtr<IStream> OptionalStream(CZebIProp& object, ULONG tag)
{
    try
    {
        return object.OpenProperty(tag, 0);
    }
    catch (...)
    {
        if (CurrentResult() != MAPI_E_NOT_FOUND)
        {
            throw;
        }
        CurrentFailure(); // ends the exception
        return {};
    }
}

void ForEachPiece(IStream& stream, const std::function<void(const std::string& piece)>& take)
{
    std::string piece;
    for (;;)
    {
        piece.resize(PieceSize);
        ULONG read = 0;
        const HRESULT result = stream.Read(piece.data(), static_cast<ULONG>(piece.size()), &read);
        if (FAILED(result))
        {
            CZebException::Throw(result);
        }
        if (read == 0)
        {
            return;
        }
        piece.resize(read);
        take(piece);
    }
}

} // namespace zeb::tools
