#include "import/VisionTextCollector.h"

#include <fmt/format.h>
#include <leptonica/allheaders.h>
#include <poppler/cpp/poppler-image.h>
#include <poppler/cpp/poppler-page-renderer.h>
#include <poppler/cpp/poppler-page.h>
#include <tesseract/baseapi.h>
#include <tesseract/ocrclass.h>
#include <tesseract/resultiterator.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <mutex>

#include "support/Locked.h"

namespace quester {

namespace {

// Below this a picture's own resolution is a placeholder (many files say 1 or
// 72 for pixels never printed); the recogniser then estimates it from the
// height of the text, as its command line does.
constexpr int minimumCredibleResolution = 70;
constexpr double pointsPerInch = 72.0;

// Leptonica reports every unreadable picture on standard error, which here is
// an ordinary outcome and would only clutter the helper's error stream.
void silenceLeptonica() {
    static std::once_flag once;
    std::call_once(once, [] { setMsgSeverity(L_SEVERITY_NONE); });
}

bool fitsRecogniser(long long width, long long height) {
    using Image = VisionTextCollector::Image;
    return width > 0 && height > 0 && width <= Image::maxSide && height <= Image::maxSide &&
           width * height <= Image::maxPixels;
}

// The recogniser takes 1, 8 and 32 bits a pixel without a colour map; anything
// else becomes grey first.
Pix* inRecogniserDepth(Pix* pix) {
    int depth = pixGetDepth(pix);
    if (pixGetColormap(pix) == nullptr && (depth == 1 || depth == 8 || depth == 32)) return pixClone(pix);
    return pixConvertTo8(pix, 0);
}

// A grey page drawn by Poppler as a Leptonica picture, without a file between.
// Leptonica keeps pixels in 32-bit words, most significant byte first, so the
// rows are copied as they are and the words put in host order afterwards.
Pix* pixFromGrey(const poppler::image& drawn) {
    Pix* pix = pixCreate(drawn.width(), drawn.height(), 8);
    if (pix == nullptr) return nullptr;
    l_uint32* words = pixGetData(pix);
    const int wordsPerRow = pixGetWpl(pix);
    for (int row = 0; row < drawn.height(); ++row) {
        std::memcpy(words + static_cast<std::ptrdiff_t>(row) * wordsPerRow,
                    drawn.const_data() + static_cast<std::ptrdiff_t>(row) * drawn.bytes_per_row(),
                    static_cast<std::size_t>(drawn.width()));
    }
    pixEndianByteSwap(pix);
    return pix;
}

// The resolution a page is drawn at: the page resolution, less for a page
// that would otherwise make a picture past the recogniser's limits.
double dotsPerInchFor(double widthInches, double heightInches) {
    using Image = VisionTextCollector::Image;
    double dotsPerInch = Image::pageDotsPerInch;
    double pixels = widthInches * heightInches * dotsPerInch * dotsPerInch;
    // A little under the limit: the drawn size is rounded up to whole pixels.
    if (pixels > Image::maxPixels) dotsPerInch *= 0.99 * std::sqrt(Image::maxPixels / pixels);
    return std::min(dotsPerInch, (Image::maxSide - 1) / std::max(widthInches, heightInches));
}

std::string trimmed(const char* text) {
    std::string_view line(text);
    constexpr std::string_view blanks = " \t\r\n\f\v";
    auto first = line.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return std::string(line.substr(first, line.find_last_not_of(blanks) - first + 1));
}

}  // namespace

void VisionTextCollector::Image::PixDeleter::operator()(Pix* pix) const {
    pixDestroy(&pix);
}

std::optional<VisionTextCollector::Image> VisionTextCollector::Image::read(std::string_view bytes) {
    silenceLeptonica();
    if (bytes.empty()) return std::nullopt;
    const auto* data = reinterpret_cast<const l_uint8*>(bytes.data());
    // The header first: a small file may claim a picture of gigabytes.
    l_int32 format = 0, width = 0, height = 0, bitsPerSample = 0, samplesPerPixel = 0, hasColormap = 0;
    if (pixReadHeaderMem(data, bytes.size(), &format, &width, &height, &bitsPerSample, &samplesPerPixel,
                         &hasColormap) != 0 ||
        !fitsRecogniser(width, height)) {
        return std::nullopt;
    }
    Image decoded(pixReadMem(data, bytes.size()));
    if (decoded.pix() == nullptr || !fitsRecogniser(decoded.width(), decoded.height())) return std::nullopt;
    Image usable(inRecogniserDepth(decoded.pix()));
    if (usable.pix() == nullptr) return std::nullopt;
    return usable;
}

std::optional<VisionTextCollector::Image> VisionTextCollector::Image::render(const poppler::page& page) {
    poppler::rectf box = page.page_rect();
    double widthInches = box.width() / pointsPerInch;
    double heightInches = box.height() / pointsPerInch;
    if (!(widthInches > 0 && heightInches > 0)) return std::nullopt;
    double dotsPerInch = dotsPerInchFor(widthInches, heightInches);

    poppler::page_renderer renderer;
    renderer.set_image_format(poppler::image::format_gray8);
    renderer.set_render_hints(poppler::page_renderer::antialiasing | poppler::page_renderer::text_antialiasing);
    poppler::image drawn = renderer.render_page(&page, dotsPerInch, dotsPerInch);
    if (!drawn.is_valid() || drawn.format() != poppler::image::format_gray8 ||
        !fitsRecogniser(drawn.width(), drawn.height())) {
        return std::nullopt;
    }
    Image image(pixFromGrey(drawn));
    if (image.pix() == nullptr) return std::nullopt;
    auto resolution = static_cast<l_int32>(std::lround(dotsPerInch));
    pixSetResolution(image.pix(), resolution, resolution);
    return image;
}

int VisionTextCollector::Image::width() const {
    return pixGetWidth(pix());
}
int VisionTextCollector::Image::height() const {
    return pixGetHeight(pix());
}
int VisionTextCollector::Image::resolution() const {
    return pixGetXRes(pix());
}

namespace {

using IdleCollectors = Locked<std::vector<std::unique_ptr<VisionTextCollector>>>;

IdleCollectors& idleCollectors() {
    static IdleCollectors idle;
    return idle;
}

}  // namespace

VisionTextCollector::Loan VisionTextCollector::borrow() {
    auto idle = idleCollectors().access([](auto& collectors) {
        std::unique_ptr<VisionTextCollector> taken;
        if (!collectors.empty()) {
            taken = std::move(collectors.back());
            collectors.pop_back();
        }
        return taken;
    });
    return Loan(idle ? std::move(idle) : std::make_unique<VisionTextCollector>());
}

VisionTextCollector::Loan::~Loan() {
    if (!collector) return;
    idleCollectors().access([this](auto& collectors) { collectors.push_back(std::move(collector)); });
}

VisionTextCollector::VisionTextCollector() {
    // The recogniser's diagnostics ("Estimating resolution as …", a missing
    // model) go to its debug file, standard error unless set; set it before
    // loading so that the loading is quiet too.
    auto api = std::make_unique<tesseract::TessBaseAPI>();
    api->SetVariable("debug_file", "/dev/null");
    std::vector<std::string> names{"debug_file"};
    std::vector<std::string> values{"/dev/null"};
    if (api->Init(nullptr, "eng", tesseract::OEM_LSTM_ONLY, nullptr, 0, &names, &values, false) != 0) return;
    // The library's default reads the picture as one block of text; documents
    // have columns, captions and headings.
    api->SetPageSegMode(tesseract::PSM_AUTO);
    engine = std::move(api);
}

VisionTextCollector::~VisionTextCollector() = default;

std::vector<std::string> VisionTextCollector::linesOfTextFrom(std::string_view imageBytes,
                                                              const CancelTest& shouldCancel) {
    if (!engine) return {};
    auto image = Image::read(imageBytes);
    if (!image) return {};
    return linesOfTextFrom(*image, shouldCancel);
}

std::vector<std::string> VisionTextCollector::linesOfTextFrom(const poppler::page& pdfPage,
                                                              const CancelTest& shouldCancel) {
    if (!engine) return {};
    auto image = Image::render(pdfPage);
    if (!image) return {};
    return linesOfTextFrom(*image, shouldCancel);
}

std::vector<std::string> VisionTextCollector::linesOfTextFrom(const Image& image, const CancelTest& shouldCancel) {
    if (!engine) return {};
    engine->SetImage(image.pix());
    if (image.resolution() >= minimumCredibleResolution) engine->SetSourceResolution(image.resolution());
    // A dense page takes seconds; the monitor lets a cancel stop it between
    // words instead of after the page.
    tesseract::ETEXT_DESC monitor;
    if (shouldCancel) {
        monitor.cancel = [](void* test, int) { return (*static_cast<const CancelTest*>(test))(); };
        monitor.cancel_this = const_cast<CancelTest*>(&shouldCancel);
    }
    std::vector<std::string> lines;
    if (engine->Recognize(&monitor) == 0) {
        std::unique_ptr<tesseract::ResultIterator> line(engine->GetIterator());
        if (line) {
            do {
                std::unique_ptr<char[]> text(line->GetUTF8Text(tesseract::RIL_TEXTLINE));
                if (text == nullptr) continue;
                std::string kept = trimmed(text.get());
                if (!kept.empty()) lines.push_back(std::move(kept));
            } while (line->Next(tesseract::RIL_TEXTLINE));
        }
    }
    // Drops the picture and the results, which would otherwise stay until the
    // next page.
    engine->Clear();
    return lines;
}

std::string VisionTextCollector::joined(const std::vector<std::string>& lines) {
    return fmt::format("{}", fmt::join(lines, " "));
}

}  // namespace quester
