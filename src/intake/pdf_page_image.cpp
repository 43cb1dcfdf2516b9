#include "intake/pdf_page_image.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Failure.h"
#include "foundation/text_encoding.h"
#include "intake/pdf_streams.h"

namespace orvane {
namespace {

// Far more than a scanned page has.
constexpr std::size_t kMostContentBytes = std::size_t{1} << 20;
constexpr std::size_t kMostTokens = 100'000;
constexpr int kMostForms = 20;

/// A rectangle in the units of the page.
struct Box {
  double left = 0, bottom = 0, right = 0, top = 0;

  double width() const { return right - left; }
  double height() const { return top - bottom; }
};

// What a page may miss at an edge: writers round the size of a page.
double slack(double side) {
  return std::max(1.0, side / 100);
}

bool covers(const Box& box, const Box& page) {
  const double x = slack(page.width());
  const double y = slack(page.height());
  return box.left <= page.left + x && box.right >= page.right - x &&
         box.bottom <= page.bottom + y && box.top >= page.top - y;
}

/// A transformation of coordinates (ISO 32000-1 clause 8.3.3).
struct Matrix {
  double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;

  /// First this one, then the other.
  Matrix then(const Matrix& o) const {
    return {a * o.a + b * o.c, a * o.b + b * o.d,       c * o.a + d * o.c,
            c * o.b + d * o.d, e * o.a + f * o.c + o.e, e * o.b + f * o.d + o.f};
  }

  /// The place of a rectangle; nothing when it is not upright any more.
  std::optional<Box> place(const Box& box) const {
    const double most = 1e-4 * std::max(std::abs(a), std::abs(d));
    if (!(std::abs(b) <= most && std::abs(c) <= most)) return std::nullopt;
    const auto [left, right] = std::minmax({a * box.left + e, a * box.right + e});
    const auto [bottom, top] = std::minmax({d * box.bottom + f, d * box.top + f});
    return Box{left, bottom, right, top};
  }
};

std::optional<std::vector<double>> numbersOf(std::vector<QPDFObjectHandle> objects,
                                             std::size_t count) {
  if (objects.size() != count) return std::nullopt;
  std::vector<double> numbers;
  for (QPDFObjectHandle& object : objects) {
    if (!object.isNumber()) return std::nullopt;
    numbers.push_back(object.getNumericValue());
  }
  return numbers;
}

std::optional<std::vector<double>> numbersOf(QPDFObjectHandle array, std::size_t count) {
  if (!array.isArray()) return std::nullopt;
  return numbersOf(array.getArrayAsVector(), count);
}

std::optional<Box> boxOf(const QPDFObjectHandle& array) {
  const auto corners = numbersOf(array, 4);
  if (!corners) return std::nullopt;
  const auto [left, right] = std::minmax({(*corners)[0], (*corners)[2]});
  const auto [bottom, top] = std::minmax({(*corners)[1], (*corners)[3]});
  return Box{left, bottom, right, top};
}

Matrix matrixOf(const std::optional<std::vector<double>>& numbers) {
  if (!numbers) throw Failure(L"的内容损坏");
  const std::vector<double>& n = *numbers;
  return {n[0], n[1], n[2], n[3], n[4], n[5]};
}

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
  return std::ranges::find(names, name) != names.end();
}

// Throws Failure for a graphics state that changes how an image looks.
void requireOpaque(QPDFObjectHandle state) {
  if (!state.isDictionary()) throw Failure(L"的内容损坏");
  for (const char* const key : {"/CA", "/ca"}) {
    QPDFObjectHandle opacity = state.getKey(key);
    if (!opacity.isNull() && !(opacity.isNumber() && opacity.getNumericValue() == 1)) {
      throw Failure(L"有透明效果");
    }
  }
  QPDFObjectHandle mode = state.getKey("/BM");
  if (!mode.isNull() && !mode.isNameAndEquals("/Normal") && !mode.isNameAndEquals("/Compatible")) {
    throw Failure(L"有透明效果");
  }
  QPDFObjectHandle mask = state.getKey("/SMask");
  if (!mask.isNull() && !mask.isNameAndEquals("/None")) throw Failure(L"有透明效果");
  for (const char* const key : {"/TR", "/TR2"}) {
    QPDFObjectHandle function = state.getKey(key);
    if (!function.isNull() && !function.isNameAndEquals("/Identity") &&
        !function.isNameAndEquals("/Default")) {
      throw Failure(L"改变图像的颜色");
    }
  }
}

/// Walks the content of a page and of its forms, and finds what it paints.
class ContentWalk : public QPDFObjectHandle::ParserCallbacks {
 public:
  ContentWalk(QPDF& pdf, const Box& page) : pdf_(pdf), page_(page) {}

  void walk(const std::string& content, const QPDFObjectHandle& resources, const Matrix& matrix) {
    const auto outer = std::tuple(resources_, matrix_, saved_);
    resources_ = resources;
    matrix_ = matrix;
    saved_.clear();
    parsePdfContent(pdf_, content, *this);
    std::tie(resources_, matrix_, saved_) = outer;
  }

  /// The image that was found, and its place on the page.
  const std::optional<QPDFObjectHandle>& image() const { return image_; }
  const Box& place() const { return place_; }

  void handleObject(QPDFObjectHandle object, std::size_t, std::size_t) override {
    if (++tokens_ > kMostTokens) throw Failure(L"的内容太多，不像扫描件");
    if (object.isInlineImage()) throw Failure(L"有内嵌图像");
    if (!object.isOperator()) {
      operands_.push_back(object);
      return;
    }
    obey(object.getOperatorValue());
    operands_.clear();
  }
  void handleEOF() override {}

 private:
  void obey(const std::string& name);
  void restore();
  void clip();
  void draw();
  void drawForm(QPDFObjectHandle form);
  void drawImage(const QPDFObjectHandle& image);
  QPDFObjectHandle resource(const char* kind);

  QPDF& pdf_;
  Box page_;
  QPDFObjectHandle resources_;
  Matrix matrix_;
  std::vector<Matrix> saved_;
  std::vector<QPDFObjectHandle> operands_;
  std::vector<std::optional<Box>> path_;  ///< upright rectangles, and other parts of a path
  std::size_t tokens_ = 0;
  int forms_ = 0;
  std::optional<QPDFObjectHandle> image_;
  Box place_;
};

void ContentWalk::obey(const std::string& name) {
  if (name == "q") return saved_.push_back(matrix_);
  if (name == "Q") return restore();
  if (name == "cm") {
    matrix_ = matrixOf(numbersOf(operands_, 6)).then(matrix_);
    return;
  }
  if (name == "Do") return draw();
  if (name == "gs") return requireOpaque(resource("/ExtGState"));
  if (name == "re") {
    const auto n = numbersOf(operands_, 4);
    if (!n) throw Failure(L"的内容损坏");
    path_.push_back(matrix_.place({(*n)[0], (*n)[1], (*n)[0] + (*n)[2], (*n)[1] + (*n)[3]}));
    return;
  }
  if (isOneOf(name, {"m", "l", "c", "v", "y", "h"})) return path_.push_back(std::nullopt);
  if (isOneOf(name, {"W", "W*"})) return clip();
  if (name == "n") return path_.clear();
  if (isOneOf(name, {"f", "F", "f*", "B", "B*", "b", "b*", "S", "s", "sh"})) {
    throw Failure(L"有画的图形");
  }
  if (isOneOf(name, {"Tj", "TJ", "'", "\""})) throw Failure(L"有文字");
  if (isOneOf(name, {"BI", "ID", "EI"})) throw Failure(L"有内嵌图像");
  if (name == "BDC" && !operands_.empty() && operands_.front().isNameAndEquals("/OC")) {
    throw Failure(L"有可以隐藏的图层");
  }
  const bool isHarmless = isOneOf(
      name, {"w",  "J",  "j",  "M",  "d",  "i",  "ri", "BMC", "BDC", "EMC", "MP", "DP",  "BX",
             "EX", "g",  "G",  "rg", "RG", "k",  "K",  "cs",  "CS",  "sc",  "SC", "scn", "SCN",
             "BT", "ET", "Tf", "Td", "TD", "Tm", "T*", "Tc",  "Tw",  "Tz",  "TL", "Tr",  "Ts"});
  if (!isHarmless) throw Failure(L"有不认识的指令 " + fromUtf8(name));
}

void ContentWalk::restore() {
  if (saved_.empty()) return;
  matrix_ = saved_.back();
  saved_.pop_back();
}

void ContentWalk::clip() {
  const bool keepsPage = path_.size() == 1 && path_[0] && covers(*path_[0], page_);
  if (!keepsPage) throw Failure(L"裁去了图像的一部分");
}

QPDFObjectHandle ContentWalk::resource(const char* kind) {
  if (operands_.size() != 1 || !operands_[0].isName() || !resources_.isDictionary()) {
    throw Failure(L"的内容损坏");
  }
  QPDFObjectHandle resources = resources_.getKey(kind);
  if (!resources.isDictionary()) throw Failure(L"的内容损坏");
  return resources.getKey(operands_[0].getName());
}

void ContentWalk::draw() {
  QPDFObjectHandle object = resource("/XObject");
  if (!object.isStream()) throw Failure(L"的内容损坏");
  if (object.getDict().hasKey("/OC")) throw Failure(L"有可以隐藏的图层");
  QPDFObjectHandle kind = object.getDict().getKey("/Subtype");
  if (kind.isNameAndEquals("/Image")) return drawImage(object);
  if (!kind.isNameAndEquals("/Form")) throw Failure(L"有不认识的对象");
  drawForm(object);
}

void ContentWalk::drawForm(QPDFObjectHandle form) {
  if (++forms_ > kMostForms) throw Failure(L"的内容太多，不像扫描件");
  QPDFObjectHandle dictionary = form.getDict();
  Matrix matrix = matrix_;
  if (dictionary.hasKey("/Matrix")) {
    matrix = matrixOf(numbersOf(dictionary.getKey("/Matrix"), 6)).then(matrix_);
  }
  const std::optional<Box> bounds = boxOf(dictionary.getKey("/BBox"));
  const std::optional<Box> clipped = bounds ? matrix.place(*bounds) : std::nullopt;
  if (!clipped || !covers(*clipped, page_)) throw Failure(L"裁去了图像的一部分");
  QPDFObjectHandle own = dictionary.getKey("/Resources");
  operands_.clear();
  walk(pdfData(form, kMostContentBytes), own.isDictionary() ? own : resources_, matrix);
}

void ContentWalk::drawImage(const QPDFObjectHandle& image) {
  if (image_) throw Failure(L"有几幅图像");
  const std::optional<Box> place = matrix_.place({0, 0, 1, 1});
  if (!place || !(matrix_.a > 0 && matrix_.d > 0)) throw Failure(L"的图像不是正放的");
  const bool isLarger = !covers(page_, {place->left, place->bottom, place->right, place->top});
  if (!covers(*place, page_)) throw Failure(L"的图像没有盖满页面");
  if (isLarger) throw Failure(L"的图像比页面大");
  image_ = image;
  place_ = *place;
}

// What is seen of a page: the crop box, as far as it is on the page.
Box visibleBox(QPDFPageObjectHelper& page) {
  const std::optional<Box> media = boxOf(page.getAttribute("/MediaBox", false));
  if (!media) throw Failure(L"没有说明大小");
  const Box crop = boxOf(page.getAttribute("/CropBox", false)).value_or(*media);
  const Box box{std::max(crop.left, media->left), std::max(crop.bottom, media->bottom),
                std::min(crop.right, media->right), std::min(crop.top, media->top)};
  if (!(box.width() > 0 && box.height() > 0)) throw Failure(L"没有说明大小");
  return box;
}

std::uint16_t orientationOf(QPDFPageObjectHelper& page) {
  QPDFObjectHandle turn = page.getAttribute("/Rotate", false);
  if (turn.isNull()) return 1;
  constexpr std::array<std::uint16_t, 4> kOrientations{1, 6, 3, 8};
  const long long degrees = turn.isInteger() ? turn.getIntValue() : 1;
  if (degrees % 90 != 0) throw Failure(L"的方向不是 90 度的倍数");
  return kOrientations[static_cast<std::size_t>((degrees / 90 % 4 + 4) % 4)];
}

// Links and the windows of notes show nothing.
void requireNoAnnotations(QPDFObjectHandle page) {
  QPDFObjectHandle annotations = page.getKey("/Annots");
  if (!annotations.isArray()) return;
  for (QPDFObjectHandle& annotation : annotations.getArrayAsVector()) {
    if (!annotation.isDictionary()) continue;
    QPDFObjectHandle kind = annotation.getKey("/Subtype");
    if (!kind.isNameAndEquals("/Link") && !kind.isNameAndEquals("/Popup")) {
      throw Failure(L"有批注");
    }
  }
}

std::string contentOf(QPDFPageObjectHelper& page) {
  std::string content;
  for (QPDFObjectHandle& stream : page.getPageContents()) {
    content += pdfData(stream, kMostContentBytes) + "\n";
    if (content.size() > kMostContentBytes) throw Failure(L"的内容太多，不像扫描件");
  }
  return content;
}

double userUnitOf(QPDFObjectHandle page) {
  QPDFObjectHandle unit = page.getKey("/UserUnit");
  return unit.isNumber() && unit.getNumericValue() > 0 ? unit.getNumericValue() : 1;
}

}  // namespace

PdfPageImage imageOfPdfPage(QPDF& pdf, const QPDFObjectHandle& object) {
  constexpr double kUnitsPerInch = 72;
  QPDFPageObjectHelper page(object);
  requireNoAnnotations(object);
  const std::uint16_t orientation = orientationOf(page);
  ContentWalk walk(pdf, visibleBox(page));
  walk.walk(contentOf(page), page.getAttribute("/Resources", false), {});
  if (!walk.image()) throw Failure(L"没有图像");
  const double scale = userUnitOf(object) / kUnitsPerInch;
  return {*walk.image(), walk.place().width() * scale, walk.place().height() * scale, orientation};
}

}  // namespace orvane
