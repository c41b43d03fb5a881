#include "Updater/UpdateFeed.h"

#include <QByteArray>
#include <QUrl>
#include <QVersionNumber>
#include <QXmlStreamReader>
#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include <fmt/core.h>

#include "FixedBase64.h"

namespace tessara {
namespace {

constexpr std::string_view formatVersion = "1";

/// Longer texts are no names of packages.
constexpr std::size_t maximumFileNameLength = 128;

using Result = std::expected<UpdateRelease, std::string>;

std::unexpected<std::string> wrong(std::string what) {
    return std::unexpected("The update feed is not in order: " + std::move(what) + ".");
}

bool isLetterOrDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isPackageName(std::string_view name) {
    return !name.empty() && name.size() <= maximumFileNameLength && isLetterOrDigit(name.front()) &&
           std::ranges::all_of(name, [](char c) {
               return isLetterOrDigit(c) || std::string_view("._+~-").contains(c);
           });
}

/// A whole number above zero, in decimal digits alone and without a zero before them, so that each
/// number has one form.
std::optional<std::int64_t> positiveNumber(std::string_view text) {
    std::int64_t number = 0;
    const char* const end = std::to_address(text.end());
    const auto [stop, error] = std::from_chars(std::to_address(text.begin()), end, number);
    const bool isWhole = error == std::errc() && stop == end;
    return isWhole && number > 0 && text.front() != '0' ? std::optional(number) : std::nullopt;
}

QVersionNumber versionOf(std::string_view text) {
    return QVersionNumber::fromString(
        QLatin1StringView(text.data(), static_cast<qsizetype>(text.size())));
}

/// The texts of the release's elements.
using Fields = std::map<std::string, std::string, std::less<>>;

Result releaseOf(const Fields& fields) {
    for (const char* name : {"version", "build", "length", "url", "signature"}) {
        if (!fields.contains(name)) return wrong(fmt::format("a release has no <{}>", name));
    }
    const auto text = [&](const char* name) -> const std::string& {
        return fields.find(name)->second;
    };
    const auto bad = [&](const char* name) {
        return wrong(fmt::format("<{}> is “{}”", name, text(name).substr(0, 100)));
    };
    UpdateRelease release;

    if (!isVersion(text("version"))) return bad("version");
    release.version.version = text("version");

    const auto build = positiveNumber(text("build"));
    if (!build) return bad("build");
    release.version.build = *build;

    const auto length = positiveNumber(text("length"));
    if (!length || std::uint64_t(*length) > maximumPackageSizeInBytes) return bad("length");
    release.lengthInBytes = std::uint64_t(*length);

    const QUrl url(QString::fromStdString(text("url")), QUrl::StrictMode);
    release.url = text("url");
    release.fileName = url.fileName(QUrl::FullyEncoded).toStdString();
    if (!url.isValid() || url.isRelative() || !isPackageName(release.fileName)) return bad("url");

    const auto signature = fixedBase64<sizeof(UpdateRelease::Signature)>(text("signature"));
    if (!signature) return bad("signature");
    release.signature = *signature;
    return release;
}

/// Reads one feed; `QXmlStreamReader` stands at the element that each operation is named after.
class FeedReader {
  public:
    explicit FeedReader(std::string_view xml)
        : xml_(QByteArray::fromRawData(xml.data(), static_cast<qsizetype>(xml.size()))) {}

    Result read() {
        std::optional<UpdateRelease> newest;
        // What a document type declares is used by none of ours and by every attack.
        while (!xml_.atEnd() && !xml_.isStartElement()) {
            if (xml_.readNext() == QXmlStreamReader::DTD) return wrong("it has a document type");
        }
        if (!xml_.hasError()) {
            if (xml_.name() != QLatin1StringView("updates"))
                return wrong("it is no list of updates");
            if (xml_.attributes().value(QLatin1StringView("format")) !=
                QLatin1StringView(formatVersion.data(),
                                  static_cast<qsizetype>(formatVersion.size()))) {
                return wrong("it is of another format than this copy of Tessara reads");
            }
        }
        while (xml_.readNextStartElement()) {
            if (xml_.name() != QLatin1StringView("release")) {
                xml_.skipCurrentElement();
                continue;
            }
            auto release = readRelease();
            if (xml_.hasError()) break;
            if (!release) return release;
            if (!newest || release->version.build > newest->version.build) {
                newest = *std::move(release);
            }
        }
        while (!xml_.atEnd())
            xml_.readNext();
        if (xml_.hasError()) {
            return wrong(
                fmt::format("line {}, {}", xml_.lineNumber(), xml_.errorString().toStdString()));
        }
        if (!newest) return wrong("it lists no release");
        return *std::move(newest);
    }

  private:
    Result readRelease() {
        Fields fields;
        while (xml_.readNextStartElement()) {
            std::string name = xml_.name().toString().toStdString();
            std::string text =
                xml_.readElementText(QXmlStreamReader::SkipChildElements).trimmed().toStdString();
            if (!fields.emplace(name, std::move(text)).second) {
                return wrong(fmt::format("a release has <{}> twice", name));
            }
        }
        return releaseOf(fields);
    }

    QXmlStreamReader xml_;
};

}  // namespace

Result readUpdateFeed(std::string_view xml) {
    if (xml.size() > maximumFeedSizeInBytes) return wrong("it is too large");
    return FeedReader(xml).read();
}

bool isVersion(std::string_view text) {
    qsizetype end = 0;
    const auto view = QLatin1StringView(text.data(), static_cast<qsizetype>(text.size()));
    const auto version = QVersionNumber::fromString(view, &end);
    // Written back it is the same: each version has one form, without leading zeros.
    return version.segmentCount() >= 1 && version.segmentCount() <= 4 && end == view.size() &&
           version.toString() == view;
}

bool isEarlierVersion(std::string_view left, std::string_view right) {
    return versionOf(left).normalized() < versionOf(right).normalized();
}

}  // namespace tessara
