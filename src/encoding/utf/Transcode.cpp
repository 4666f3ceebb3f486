#include "utf/Transcode.h"

#include "utf/TextError.h"

#include <memory>

namespace vqrx::encoding::utf::v1 {
namespace {

struct ParserDeleter {
    void operator()(TextParser* parser) const noexcept { DeleteParser(parser); }
};
struct EmitterDeleter {
    void operator()(TextEmitter* emitter) const noexcept { DeleteEmitter(emitter); }
};

void Validate(std::uint32_t codePoint)
{
    if (codePoint == 0 || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
        throw TextError("invalid Unicode codepoint");
    }
}

} // namespace

TextParser* CreateParser(int encoding)
{
    switch (encoding) {
    case kUtf8:
        return new TextParserUTF8;
    case kUtf16Le:
        return new TextParserUTF16LE;
    default:
        return nullptr;
    }
}

TextEmitter* CreateEmitter(int encoding)
{
    switch (encoding) {
    case kUtf8:
        return new TextEmitterUTF8;
    case kUtf16Le:
        return new TextEmitterUTF16LE;
    default:
        return nullptr;
    }
}

// To delete an object through a base class without a virtual destructor is undefined behaviour, so
// both functions find the object's own class first.
void DeleteParser(TextParser* parser) noexcept
{
    // NOLINTNEXTLINE(readability-delete-null-pointer): the condition tests the type
    if (auto* const utf8 = dynamic_cast<TextParserUTF8*>(parser)) {
        delete utf8;
    } else {
        delete dynamic_cast<TextParserUTF16LE*>(parser);
    }
}

void DeleteEmitter(TextEmitter* emitter) noexcept
{
    // NOLINTNEXTLINE(readability-delete-null-pointer): the condition tests the type
    if (auto* const utf8 = dynamic_cast<TextEmitterUTF8*>(emitter)) {
        delete utf8;
    } else {
        delete dynamic_cast<TextEmitterUTF16LE*>(emitter);
    }
}

EncodedText Transcode(const std::uint8_t* data, std::size_t length, int from, int to)
{
    const std::unique_ptr<TextParser, ParserDeleter> parser(CreateParser(from));
    const std::unique_ptr<TextEmitter, EmitterDeleter> emitter(CreateEmitter(to));
    if (!parser || !emitter) {
        throw TextError("unknown encoding " + std::to_string(parser ? to : from));
    }
    const std::vector<std::uint8_t> input(data, data + length);
    const std::vector<std::uint32_t> codePoints = parser->Parse(input, 0);
    for (const std::uint32_t codePoint : codePoints) {
        Validate(codePoint);
    }
    return {to, emitter->Emit(codePoints)};
}

} // namespace vqrx::encoding::utf::v1
