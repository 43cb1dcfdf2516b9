#include "intake/pdf_streams.h"

#include <algorithm>
#include <map>
#include <stdexcept>

#include "foundation/Failure.h"
#include "foundation/text_encoding.h"
#include "imaging/raster/Raster.h"

namespace orvane {
namespace {

/// The end of a chain of filters: keeps the first bytes. A file of a few bytes can become
/// gigabytes, so it refuses far more than is asked for.
class FirstBytes : public Pipeline {
 public:
  explicit FirstBytes(std::uint64_t most) : Pipeline("first bytes", nullptr), most_(most) {}

  void write(unsigned char const* data, std::size_t length) override {
    constexpr std::uint64_t kMostSurplus = 1 << 20;
    const std::size_t kept = std::min<std::uint64_t>(length, most_ - bytes_.size());
    bytes_.append(reinterpret_cast<const char*>(data), kept);
    surplus_ += length - kept;
    if (surplus_ > kMostSurplus) throw std::runtime_error("too much data");
  }
  void finish() override {}

  std::string& bytes() { return bytes_; }
  std::uint64_t surplus() const { return surplus_; }

 private:
  std::uint64_t most_;
  std::uint64_t surplus_ = 0;
  std::string bytes_;
};

// Pipes a stream. Throws Failure when a filter does not accept the data.
void pipe(QPDFObjectHandle stream, qpdf_stream_decode_level_e level, FirstBytes& end) {
  bool isFiltered = false;
  const bool isWhole = stream.pipeStreamData(&end, &isFiltered, 0, level, true, false);
  if (!isWhole || (level != qpdf_dl_none && !isFiltered && stream.getDict().hasKey("/Filter"))) {
    throw Failure(L"压缩数据损坏");
  }
}

/// A stream that lives in the document for a while.
class TemporaryStream {
 public:
  TemporaryStream(QPDF& pdf, const std::string& data)
      : pdf_(pdf), stream_(QPDFObjectHandle::newStream(&pdf, data)) {}
  TemporaryStream(const TemporaryStream&) = delete;
  TemporaryStream& operator=(const TemporaryStream&) = delete;
  ~TemporaryStream() { pdf_.replaceObject(stream_.getObjGen(), QPDFObjectHandle::newNull()); }

  QPDFObjectHandle& get() { return stream_; }

 private:
  QPDF& pdf_;
  QPDFObjectHandle stream_;
};

std::vector<QPDFObjectHandle> listOf(QPDFObjectHandle object) {
  if (object.isNull()) return {};
  return object.isArray() ? object.getArrayAsVector() : std::vector{object};
}

PdfCodec codecOf(const std::string& filter) {
  if (filter == "/JBIG2Decode") throw Failure(L"的图像是 JBIG2，不能登记");
  if (filter == "/JPXDecode") throw Failure(L"的图像是 JPEG 2000，不能登记");
  if (filter == "/DCTDecode") return PdfCodec::Jpeg;
  return filter == "/CCITTFaxDecode" ? PdfCodec::Fax : PdfCodec::Plain;
}

void requireKnownFilter(QPDFObjectHandle filter) {
  static constexpr const char* kKnown[] = {"/FlateDecode", "/LZWDecode", "/RunLengthDecode",
                                           "/ASCII85Decode", "/ASCIIHexDecode"};
  const auto isIt = [&](const char* known) { return filter.isNameAndEquals(known); };
  if (std::ranges::any_of(kKnown, isIt)) return;
  throw Failure(L"的图像的压缩方式不能登记：" +
                (filter.isName() ? fromUtf8(filter.getName()) : std::wstring(L"?")));
}

}  // namespace

PdfFilters readPdfFilters(QPDFObjectHandle stream) {
  QPDFObjectHandle dictionary = stream.getDict();
  PdfFilters filters;
  filters.names = listOf(dictionary.getKey("/Filter"));
  filters.parameters = listOf(dictionary.getKey("/DecodeParms"));
  filters.parameters.resize(filters.names.size(), QPDFObjectHandle::newNull());
  filters.codecParameters = QPDFObjectHandle::newNull();
  if (!filters.names.empty() && filters.names.back().isName()) {
    filters.codec = codecOf(filters.names.back().getName());
  }
  if (filters.codec != PdfCodec::Plain) {
    filters.codecParameters = filters.parameters.back();
    filters.names.pop_back();
    filters.parameters.pop_back();
  }
  std::ranges::for_each(filters.names, requireKnownFilter);
  return filters;
}

Bytes pdfImageData(QPDF& pdf, const QPDFObjectHandle& stream, const PdfFilters& filters,
                   std::uint64_t most) {
  FirstBytes end(most);
  if (filters.codec == PdfCodec::Plain) {
    pipe(stream, qpdf_dl_specialized, end);
  } else if (filters.names.empty()) {
    pipe(stream, qpdf_dl_none, end);
  } else {
    FirstBytes coded(kMaxPageBytes);
    pipe(stream, qpdf_dl_none, coded);
    TemporaryStream outer(pdf, coded.bytes());
    outer.get().getDict().replaceKey("/Filter", QPDFObjectHandle::newArray(filters.names));
    outer.get().getDict().replaceKey("/DecodeParms",
                                     QPDFObjectHandle::newArray(filters.parameters));
    pipe(outer.get(), qpdf_dl_specialized, end);
  }
  return {end.bytes().begin(), end.bytes().end()};
}

std::string pdfData(const QPDFObjectHandle& stream, std::uint64_t most) {
  FirstBytes end(most);
  pipe(stream, qpdf_dl_specialized, end);
  if (end.surplus() > 0) throw Failure(L"的内容太多，不像扫描件");
  return std::move(end.bytes());
}

void parsePdfContent(QPDF& pdf, const std::string& content,
                     QPDFObjectHandle::ParserCallbacks& callbacks) {
  TemporaryStream stream(pdf, content);
  const std::size_t warnings = pdf.numWarnings();
  stream.get().parseAsContents(&callbacks);
  if (pdf.numWarnings() != warnings) throw Failure(L"的内容损坏");
}

}  // namespace orvane
