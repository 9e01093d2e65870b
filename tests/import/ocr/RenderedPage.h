#pragma once

#include <poppler/cpp/poppler-document.h>
#include <poppler/cpp/poppler-image.h>
#include <poppler/cpp/poppler-page-renderer.h>
#include <poppler/cpp/poppler-page.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "testing/TempDir.h"

namespace quester::testing {

// The first page of a PDF drawn at 300 dots per inch and saved as a PNG in
// `dir`: what a scan of the printed page would look like.
inline std::filesystem::path renderedPng(const std::string& pdf, const TempDir& dir, const std::string& name) {
    std::unique_ptr<poppler::document> document(
        poppler::document::load_from_raw_data(pdf.data(), static_cast<int>(pdf.size())));
    if (!document) throw std::runtime_error("the PDF doesn't load");
    std::unique_ptr<poppler::page> page(document->create_page(0));
    poppler::page_renderer renderer;
    renderer.set_render_hints(poppler::page_renderer::antialiasing | poppler::page_renderer::text_antialiasing);
    auto path = dir.path() / name;
    if (!renderer.render_page(page.get(), 300, 300).save(path.string(), "png", 300)) {
        throw std::runtime_error("can't save " + path.string());
    }
    return path;
}

}  // namespace quester::testing
