#include "imaging/pdf/pdf_head.h"

#include <string_view>

#include "imaging/pdf/srgb_profile.h"

namespace orvane {
namespace {

// The second line tells transfer programs that the file is binary.
constexpr std::string_view kHeader = "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n";

constexpr std::string_view kMetadata =
    "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
    "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
    "<rdf:Description rdf:about=\"\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\">"
    "<dc:format>application/pdf</dc:format></rdf:Description>\n"
    "<rdf:Description rdf:about=\"\" xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\">"
    "<xmp:CreatorTool>Orvane</xmp:CreatorTool></rdf:Description>\n"
    "<rdf:Description rdf:about=\"\" xmlns:pdf=\"http://ns.adobe.com/pdf/1.3/\">"
    "<pdf:Producer>Orvane</pdf:Producer></rdf:Description>\n"
    "<rdf:Description rdf:about=\"\" xmlns:pdfaid=\"http://www.aiim.org/pdfa/ns/id/\">"
    "<pdfaid:part>1</pdfaid:part><pdfaid:conformance>B</pdfaid:conformance></rdf:Description>\n"
    "</rdf:RDF>\n"
    "</x:xmpmeta>\n"
    "<?xpacket end=\"w\"?>";

std::string catalog() {
  return "<< /Type /Catalog /Pages " + pdfReference(kPdfRootPages) + "\n/Metadata " +
         pdfReference(kPdfMetadata) +
         "\n/OutputIntents [ << /Type /OutputIntent /S /GTS_PDFA1\n"
         "/OutputConditionIdentifier (sRGB IEC61966-2.1) /Info (sRGB IEC61966-2.1)\n"
         "/RegistryName (http://www.color.org) /DestOutputProfile " +
         pdfReference(kPdfProfile) + " >> ] >>";
}

std::string stream(std::string_view entries, std::string_view content) {
  return "<< " + std::string(entries) + " /Length " + std::to_string(content.size()) + " >>" +
         kBeginPdfStream + std::string(content) + kEndPdfStream;
}

PdfHead makeHead() {
  PdfHead head{std::string(kHeader), {}};
  const auto add = [&](std::uint32_t number, const std::string& content) {
    head.offsets.push_back(head.text.size());
    head.text += beginPdfObject(number) + content + kEndPdfObject;
  };
  add(kPdfCatalog, catalog());
  add(kPdfMetadata, stream("/Type /Metadata /Subtype /XML", kMetadata));
  add(kPdfProfile, stream("/N 3", srgbProfile()));
  return head;
}

}  // namespace

const PdfHead& pdfHead() {
  static const PdfHead head = makeHead();
  return head;
}

std::string beginPdfObject(std::uint32_t number) {
  return std::to_string(number) + " 0 obj\n";
}

std::string pdfReference(std::uint32_t number) {
  return std::to_string(number) + " 0 R";
}

}  // namespace orvane
