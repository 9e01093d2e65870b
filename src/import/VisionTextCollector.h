#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct Pix;

namespace poppler {
class page;
}

namespace tesseract {
class TessBaseAPI;
}

namespace quester {

// Recognises printed English text in pictures and in drawn PDF pages with
// Tesseract's LSTM model from the system's tessdata. Loading the model costs
// far more than most pages, so readers borrow a loaded collector from the
// process (`borrow`) rather than make one. A collector whose model could not
// be loaded gives no lines. One thread at a time.
class VisionTextCollector {
public:
    // A decoded picture as the recogniser reads it, with the resolution it was
    // made at. Pictures past `maxPixels`, or wider or taller than the
    // recogniser takes, are refused rather than decoded.
    class Image {
    public:
        static constexpr long long maxPixels = 60'000'000;
        static constexpr int maxSide = 32'767;
        // Drawn PDF pages are made at this resolution: small print is lost at
        // the 72 dots per inch of a page's own units.
        static constexpr int pageDotsPerInch = 300;

        // PNG, JPEG, TIFF (its first picture), GIF, WebP, BMP, PNM or JPEG 2000
        // from memory; none when unreadable or too large.
        static std::optional<Image> read(std::string_view bytes);
        // The page drawn in grey at `pageDotsPerInch`, or at less when a page
        // that large would pass `maxPixels`; none when it can't be drawn.
        static std::optional<Image> render(const poppler::page& page);

        int width() const;
        int height() const;
        // Dots per inch; 0 when the picture doesn't say.
        int resolution() const;
        Pix* pix() const { return picture.get(); }

    private:
        struct PixDeleter {
            void operator()(Pix* pix) const;
        };
        explicit Image(Pix* pix) : picture(pix) {}

        std::unique_ptr<Pix, PixDeleter> picture;
    };

    // A collector lent to one user at a time; going out of scope gives it back.
    class Loan {
    public:
        Loan(Loan&& other) noexcept = default;
        Loan& operator=(Loan&&) = delete;
        ~Loan();

        VisionTextCollector* operator->() const { return collector.get(); }
        VisionTextCollector& operator*() const { return *collector; }

    private:
        friend class VisionTextCollector;
        explicit Loan(std::unique_ptr<VisionTextCollector> lent) : collector(std::move(lent)) {}

        std::unique_ptr<VisionTextCollector> collector;
    };

    // A free collector of the process, or a new one (its model loaded) when
    // all are lent. Not one a thread: the import helper reads every document
    // on a thread of its own, and would load the model for each. Any thread.
    static Loan borrow();

    VisionTextCollector();
    ~VisionTextCollector();
    VisionTextCollector(const VisionTextCollector&) = delete;
    VisionTextCollector& operator=(const VisionTextCollector&) = delete;

    bool hasModel() const { return engine != nullptr; }

    // Asked between words while recognising; true stops recognition, which
    // then gives no lines. May be empty.
    using CancelTest = std::function<bool()>;

    // The lines of text in reading order, trimmed, without empty ones. No lines
    // for an unreadable picture or page, without a model, or when cancelled.
    std::vector<std::string> linesOfTextFrom(std::string_view imageBytes, const CancelTest& shouldCancel = {});
    std::vector<std::string> linesOfTextFrom(const poppler::page& pdfPage, const CancelTest& shouldCancel = {});
    std::vector<std::string> linesOfTextFrom(const Image& image, const CancelTest& shouldCancel = {});

    // Lines as one page of text: joined by a blank.
    static std::string joined(const std::vector<std::string>& lines);

private:
    std::unique_ptr<tesseract::TessBaseAPI> engine;
};

}  // namespace quester
