#pragma once

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace quester::testing {

// Writes small, valid PDFs: pages (US Letter unless set) of Helvetica text lines, with a
// cross-reference table whose offsets are right, so a reader need not repair
// anything. Optionally locked: an /Encrypt dictionary whose user password
// isn't empty, so a reader can't open the document without one.
class PdfWriter {
public:
    PdfWriter& page(std::vector<std::string> lines, int fontSize = 12) {
        pages.push_back({std::move(lines), fontSize});
        return *this;
    }
    // The size of every page, in points.
    PdfWriter& pageSize(int width, int height) {
        pageWidth = width;
        pageHeight = height;
        return *this;
    }
    PdfWriter& lockedByPassword() {
        locked = true;
        return *this;
    }

    std::string bytes() const {
        std::string pdf = "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n";
        std::vector<std::size_t> offsets;
        auto object = [&](const std::string& body) {
            offsets.push_back(pdf.size());
            pdf += std::to_string(offsets.size()) + " 0 obj\n" + body + "\nendobj\n";
        };
        object("<< /Type /Catalog /Pages 2 0 R >>");
        object("<< /Type /Pages /Kids [" + kids() + "] /Count " + std::to_string(pages.size()) + " >>");
        object("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>");
        for (std::size_t i = 0; i < pages.size(); ++i) {
            object("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 " + std::to_string(pageWidth) + " " +
                   std::to_string(pageHeight) + "] /Resources << /Font << /F1 3 0 R >> >> /Contents " +
                   std::to_string(contentsNumber(i)) + " 0 R >>");
            std::string stream = contents(pages[i]);
            object("<< /Length " + std::to_string(stream.size()) + " >>\nstream\n" + stream + "\nendstream");
        }
        std::string trailerExtras;
        if (locked) {
            object("<< /Filter /Standard /V 1 /R 2 /P -44 /O <" + std::string(64, 'A') + "> /U <" +
                   std::string(64, '5') + "> >>");
            trailerExtras = " /Encrypt " + std::to_string(offsets.size()) + " 0 R /ID [<" + std::string(32, '1') +
                            "> <" + std::string(32, '1') + ">]";
        }
        std::size_t crossReference = pdf.size();
        pdf += "xref\n0 " + std::to_string(offsets.size() + 1) + "\n0000000000 65535 f \n";
        for (std::size_t offset : offsets) {
            char entry[21];
            std::snprintf(entry, sizeof entry, "%010zu 00000 n \n", offset);
            pdf += entry;
        }
        pdf += "trailer\n<< /Size " + std::to_string(offsets.size() + 1) + " /Root 1 0 R" + trailerExtras +
               " >>\nstartxref\n" + std::to_string(crossReference) + "\n%%EOF\n";
        return pdf;
    }

private:
    struct Page {
        std::vector<std::string> lines;
        int fontSize;
    };

    // Objects 1 to 3 are the catalogue, the page tree and the font; then
    // each page and its contents.
    static std::size_t pageNumber(std::size_t index) { return 4 + 2 * index; }
    static std::size_t contentsNumber(std::size_t index) { return pageNumber(index) + 1; }

    std::string kids() const {
        std::string list;
        for (std::size_t i = 0; i < pages.size(); ++i) list += std::to_string(pageNumber(i)) + " 0 R ";
        return list;
    }

    static std::string escaped(const std::string& text) {
        std::string out;
        for (char c : text) {
            if (c == '(' || c == ')' || c == '\\') out += '\\';
            out += c;
        }
        return out;
    }

    std::string contents(const Page& page) const {
        const int leading = page.fontSize * 3 / 2;
        std::string stream = "BT /F1 " + std::to_string(page.fontSize) + " Tf " + std::to_string(leading) + " TL 72 " +
                             std::to_string(pageHeight - 72 - page.fontSize) + " Td";
        for (const auto& line : page.lines) stream += " (" + escaped(line) + ") Tj T*";
        return stream + " ET";
    }

    std::vector<Page> pages;
    int pageWidth = 612;
    int pageHeight = 792;
    bool locked = false;
};

}  // namespace quester::testing
