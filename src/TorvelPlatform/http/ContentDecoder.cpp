#include "TorvelPlatform/http/ContentDecoder.h"

#include "TorvelPlatform/http/HeaderText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include <brotli/decode.h>
#include <zlib.h>

namespace torvel {
namespace {

using Status = ContentCoding::Status;

using Buffer = std::array<char, std::size_t{32} * 1024>;

// gzip (RFC 1952) and deflate (RFC 1950; raw RFC 1951 too, which some servers send under that name).
class ZlibCoding final : public ContentCoding {
  public:
    enum class Format { gzip, deflate };

    explicit ZlibCoding(Format format) : m_format(format) {}
    ~ZlibCoding() override {
        if (m_open) inflateEnd(&m_stream);
    }
    ZlibCoding(const ZlibCoding&) = delete;
    ZlibCoding& operator=(const ZlibCoding&) = delete;

    Status decode(std::string_view input, std::string& output, std::size_t limit) override {
        m_held += input;
        if (!m_open && !open()) return Status::ok;  // not yet known which format it is
        const std::string held = std::exchange(m_held, {});
        m_stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(held.data()));
        m_stream.avail_in = static_cast<uInt>(held.size());
        while (m_stream.avail_in > 0 || m_moreOutput) {
            if (m_ended && !startNextMember()) return Status::malformed;
            const Status status = inflateSome(output, limit);
            if (status != Status::ok) return status;
        }
        return Status::ok;
    }

    bool ended() const override { return m_ended; }

  private:
    bool open() {
        constexpr int gzipWindow = 16 + MAX_WBITS;
        if (m_format == Format::gzip) return m_open = inflateInit2(&m_stream, gzipWindow) == Z_OK;
        if (m_held.size() < 2) return false;
        return m_open = inflateInit2(&m_stream, startsWithZlibHeader() ? MAX_WBITS : -MAX_WBITS) == Z_OK;
    }

    bool startsWithZlibHeader() const {
        const unsigned first = static_cast<unsigned char>(m_held[0]);
        const unsigned second = static_cast<unsigned char>(m_held[1]);
        return (first & 0x0FU) == Z_DEFLATED && (first * 256 + second) % 31 == 0;
    }

    // A gzip file may be several members in a row (RFC 1952, 2.2); anything else after the end is garbage.
    bool startNextMember() {
        m_ended = false;
        return m_format == Format::gzip && inflateReset(&m_stream) == Z_OK;
    }

    Status inflateSome(std::string& output, std::size_t limit) {
        Buffer buffer;
        m_stream.next_out = reinterpret_cast<Bytef*>(buffer.data());
        m_stream.avail_out = static_cast<uInt>(buffer.size());
        const int result = inflate(&m_stream, Z_NO_FLUSH);
        const std::size_t made = buffer.size() - m_stream.avail_out;
        m_ended = result == Z_STREAM_END;
        m_moreOutput = !m_ended && m_stream.avail_out == 0;
        m_total += made;
        if (m_total > limit) return Status::tooLarge;
        output.append(buffer.data(), made);
        const bool sound = result == Z_OK || result == Z_STREAM_END || result == Z_BUF_ERROR;
        return sound ? Status::ok : Status::malformed;
    }

    Format m_format;
    z_stream m_stream{};
    bool m_open = false;
    bool m_ended = false;
    bool m_moreOutput = false;
    std::string m_held;  // the first byte, until the second tells the format
    std::size_t m_total = 0;
};

// RFC 7932.
class BrotliCoding final : public ContentCoding {
  public:
    Status decode(std::string_view input, std::string& output, std::size_t limit) override {
        const auto* next = reinterpret_cast<const std::uint8_t*>(input.data());
        std::size_t left = input.size();
        for (;;) {
            if (ended()) return left == 0 ? Status::ok : Status::malformed;
            Buffer buffer;
            auto* out = reinterpret_cast<std::uint8_t*>(buffer.data());
            std::size_t room = buffer.size();
            const BrotliDecoderResult result =
                BrotliDecoderDecompressStream(m_state.get(), &left, &next, &room, &out, nullptr);
            m_total += buffer.size() - room;
            if (m_total > limit) return Status::tooLarge;
            output.append(buffer.data(), buffer.size() - room);
            if (result == BROTLI_DECODER_RESULT_ERROR) return Status::malformed;
            if (result == BROTLI_DECODER_RESULT_NEEDS_MORE_INPUT) return Status::ok;
        }
    }

    bool ended() const override { return BrotliDecoderIsFinished(m_state.get()) != 0; }

  private:
    struct Destroy {
        void operator()(BrotliDecoderState* state) const { BrotliDecoderDestroyInstance(state); }
    };
    std::unique_ptr<BrotliDecoderState, Destroy> m_state{
        BrotliDecoderCreateInstance(nullptr, nullptr, nullptr)};
    std::size_t m_total = 0;
};

std::unique_ptr<ContentCoding> makeCoding(std::string_view name) {
    if (equalsIgnoringCase(name, "gzip") || equalsIgnoringCase(name, "x-gzip"))
        return std::make_unique<ZlibCoding>(ZlibCoding::Format::gzip);
    if (equalsIgnoringCase(name, "deflate")) return std::make_unique<ZlibCoding>(ZlibCoding::Format::deflate);
    if (equalsIgnoringCase(name, "br")) return std::make_unique<BrotliCoding>();
    return nullptr;
}

}  // namespace

ContentDecoder::ContentDecoder(std::string_view contentEncoding) {
    constexpr std::size_t mostCodings = 3;
    for (const std::string_view name : listItems(contentEncoding)) {
        if (equalsIgnoringCase(name, "identity")) continue;
        std::unique_ptr<ContentCoding> coding = makeCoding(name);
        m_supported = m_supported && coding != nullptr && m_codings.size() < mostCodings;
        if (!m_supported) return;
        m_codings.push_back(std::move(coding));
    }
    std::reverse(m_codings.begin(), m_codings.end());
}

ContentDecoder::Status ContentDecoder::decode(std::string_view input, std::string& output,
                                              std::size_t limit) {
    m_fed = m_fed || !input.empty();
    std::string between;
    for (std::size_t i = 0; i < m_codings.size(); ++i) {
        const bool last = i + 1 == m_codings.size();
        std::string next;
        const Status status = m_codings[i]->decode(input, last ? output : next, limit);
        if (status != Status::ok) return status;
        between.swap(next);
        input = between;
    }
    return Status::ok;
}

bool ContentDecoder::ended() const {
    return !m_fed || std::all_of(m_codings.begin(), m_codings.end(),
                                 [](const auto& coding) { return coding->ended(); });
}

}  // namespace torvel
