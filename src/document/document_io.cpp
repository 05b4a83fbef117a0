// Opening, reverting and saving a document.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "document/default_detector.hpp"
#include "document/single_file_document.hpp"
#include "document/whitespace_trim.hpp"
#include "platform/file_replace.hpp"
#include "platform/log.hpp"
#include "platform/notification_center.hpp"
#include "platform/run_loop.hpp"
#include "platform/user_defaults.hpp"

namespace vx {
namespace {

std::string lastComponent(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool identifierHasComponent(const std::string& identifier, std::string_view component) {
    size_t start = 0;
    while (start <= identifier.size()) {
        size_t end = identifier.find('.', start);
        if (end == std::string::npos) end = identifier.size();
        if (std::string_view(identifier).substr(start, end - start) == component) return true;
        start = end + 1;
    }
    return false;
}

// Puts the owner, group and permission bits of the file that was replaced back on the new one.
void repairAttributes(const std::string& path, const struct stat& before, const struct stat& after) {
    uid_t owner = before.st_uid == static_cast<uid_t>(-1) ? after.st_uid : before.st_uid;
    gid_t group = before.st_gid == static_cast<gid_t>(-1) ? after.st_gid : before.st_gid;
    VXGoodLog("owner = %d", static_cast<int>(owner));
    VXGoodLog("group = %d", static_cast<int>(group));
    VXGoodLog("absoluteURL = %s", path.c_str());
    if (owner != after.st_uid || group != after.st_gid) {
        if (::chown(path.c_str(), owner, group) != 0)
            VX_LOG_DEBUG("document", "chown %s: %s", path.c_str(), std::strerror(errno));
    }
    const mode_t oldPermissions = before.st_mode & 07777;
    const mode_t newPermissions = after.st_mode & 07777;
    const mode_t mixPermissions = oldPermissions | newPermissions;
    VXGoodLog("\t oldPermissions %d", static_cast<int>(oldPermissions));
    VXGoodLog("\t newPermissions %d", static_cast<int>(newPermissions));
    VXGoodLog("\t mixPermissions %d", static_cast<int>(mixPermissions));
    if (oldPermissions & ~newPermissions) {
        if (::chmod(path.c_str(), mixPermissions) != 0)
            VX_LOG_DEBUG("document", "chmod %s: %s", path.c_str(), std::strerror(errno));
    }
}

}  // namespace

// --- reading -----------------------------------------------------------------------------------

std::unique_ptr<VXTextStorage> VXSingleFileDocument::textStorageFromURL(const std::string& path, uint64_t* encoding) {
    return textStorageFromURL(path, encoding, false, false);
}

std::unique_ptr<VXTextStorage> VXSingleFileDocument::textStorageFromURL(const std::string& path, uint64_t* encoding,
                                                                        bool /*authenticateIfNecessary*/,
                                                                        bool shouldSetStat) {
    // A file that needs administrator rights is not read with them: it fails like any other.
    if (shouldSetStat) {
        m_lastReadStat = Clock::now();
        m_diskStamp = fileStampForPath(path);
    }
    ReadResult read = resolveRead(readPlainText(path), [&] { return readStrictUTF8(path); });
    if (encoding) *encoding = read.encoding;
    m_byteOrder = read.byteOrder;
    return std::move(read.storage);
}

bool VXSingleFileDocument::readFromURL(const std::string& path, const std::string& type, std::string* error) {
    const auto started = Clock::now();
    // Taken before the bytes are read: a change made while reading shows as a change on disk.
    const auto stamp = fileStampForPath(path);
    errno = 0;
    PlainText platform = readPlainText(path);
    if (!platform.storage) {
        if (error && !platform.notRegular.empty())
            *error = "“" + lastComponent(path) + "” is " + platform.notRegular + ", not a regular file: only files can be opened.";
        else if (error)
            *error = "The file “" + lastComponent(path) + "” couldn’t be opened: " +
                     std::strerror(platform.error ? platform.error : EIO) + ".";
        return false;
    }
    ReadResult read = resolveRead(std::move(platform), [&] { return readStrictUTF8(path); });
    if (!read.storage) {
        if (error) *error = "The file “" + lastComponent(path) + "” couldn’t be read as text.";
        return false;
    }
    if (!finishOpening(std::move(read), path, error)) return false;
    m_fileType = type;
    m_lastReadStat = started;
    m_diskStamp = stamp;
    return true;
}

bool VXSingleFileDocument::readFromData(std::string_view bytes, const std::string& path, std::string* error) {
    ReadResult read = resolveRead(plainTextFromBytes(bytes), [&]() -> std::unique_ptr<VXTextStorage> {
        auto text = decodeStrictly(bytes.substr(bytes.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0), encoding::kUTF8);
        if (!text) return nullptr;
        return std::make_unique<VXTextStorage>(*text);
    });
    if (!read.storage) {
        if (error) *error = lastComponent(path) + ": the input couldn’t be read as text.";
        return false;
    }
    return finishOpening(std::move(read), path, error);
}

std::optional<DocumentLanguage> VXSingleFileDocument::chooseLanguage(const std::string& path,
                                                                     const VXTextStorage& text) {
    if (!m_highlightingEnabled || !m_languageChooser)
        return m_languageChooser ? m_languageChooser->plainTextLanguage() : plainTextLanguage();
    return m_languageChooser->detectLanguageForFilePath(path, text);
}

bool VXSingleFileDocument::finishOpening(ReadResult read, const std::string& path, std::string* error) {
    // Nothing of the document changes until the text and the language are both known.
    std::unique_ptr<VXTextStorage> storage = std::move(read.storage);
    std::optional<DocumentLanguage> language = chooseLanguage(path, *storage);
    if (!language) {
        if (error) *error = "No language could be chosen for “" + lastComponent(path) + "”.";
        return false;
    }

    m_contentsEncoding = read.encoding;
    m_byteOrder = read.byteOrder;
    m_byteOrderMark = read.byteOrderMark && read.encoding == encoding::kUTF8;
    m_validInNoEncoding = read.validInNoEncoding;
    m_savingAsUTF8Accepted = false;
    m_fileURL = path;
    m_language = *language;
    // Detection, settings and language defaults start from the editor-wide default.
    if (!userHasChangedIndentationContext) m_indentation = VXIndentationContext::defaultContext();
    if (storage->length() > 0 && m_highlighter) {
        if (auto attributes = m_highlighter->defaultZoneAttributes()) storage->setAttributes(*attributes, {0, storage->length()});
    }
    if (m_highlighter) m_highlighter->willReplaceContents();
    setContents(std::move(storage));
    if (m_highlighter)  // highlights in the background; the first screen does not wait for it
        m_highlighter->recomputeCache({0, m_contents->length()}, static_cast<int64_t>(m_contents->length()),
                                      kTextStorageEditedCharacters, true);
    if (!userHasChangedIndentationContext) setUpTabInfoWithDDLang(defaultDetectorLanguage());
    m_undoManager.removeAllActions();
    m_changeCount = 0;
    m_recentEdits.clear();

    RunLoop::current().performAfterDelay(std::chrono::milliseconds(0), [this, alive = std::weak_ptr<bool>(m_alive)] {
        if (auto still = alive.lock(); still && *still) dealWithNewDoc();
    });
    postEncodingChanged();
    recalculateLineEnding();
    return true;
}

void VXSingleFileDocument::dealWithNewDoc() {
    for (auto* view : m_views) view->documentDidOpen();
}

void VXSingleFileDocument::prepareForNewFile(const std::string& path) {
    if (m_fileURL) return;
    if (auto language = chooseLanguage(path, *m_contents)) m_language = *language;
    if (!userHasChangedIndentationContext)
        setUpTabInfoWithDDLang(VXDefaultDetector::sharedDetector().languageForPath(path));
}

bool VXSingleFileDocument::revertToContentsOfURL(const std::string& path, const std::string& type, std::string* error) {
    return readFromURL(path, type, error);
}

bool VXSingleFileDocument::revertFromDiskAfterDiskChanged() {
    if (!m_fileURL) return false;
    std::string error;
    return revertToContentsOfURL(*m_fileURL, m_fileType, &error);
}

bool VXSingleFileDocument::revertFromDiskAfterDiskChangedToURL(const std::string& /*path*/, const std::string& /*data*/) {
    // Re-read through the document's own file, whatever the monitor saw.
    return revertFromDiskAfterDiskChanged();
}

// --- saving ------------------------------------------------------------------------------------

bool VXSingleFileDocument::trimTrailingWhitespaceApplies() const {
    if (UserDefaults::standardUserDefaults().integerForKey("VXTrimTrailingWhitespaceAmount") == 0) return false;
    if (!currentView() || currentView()->isFolded()) return false;
    for (auto* view : m_views)
        if (!view->isDecoherent()) return false;
    return !identifierHasComponent(m_language.identifier, "markdown");
}

// The message for a write that failed, naming the step when it says more than the error alone.
static std::string saveFailure(const std::string& name, const AtomicWriteResult& written) {
    if (written.error == kNotRegularFile && written.failedStep == FileStep::Open)
        return "The document “" + name + "” couldn’t be saved: the path is not a regular file.";
    std::string message = "The document “" + name + "” couldn’t be saved: " + std::strerror(written.error) + ".";
    if (!written.keptCopy.empty()) message += " Its previous contents are kept in " + written.keptCopy + ".";
    return message;
}

bool VXSingleFileDocument::saveToURL(const std::string& path, const std::string& type, SaveOperation operation,
                                     std::string* error) {
    if (needsConfirmationToSave()) {
        if (error)
            *error = "“" + lastComponent(path) + "” was not valid text in any encoding; saving it as UTF-8 would change its bytes.";
        return false;
    }
    // 1. The trim is worked out first and applied to the text only once the file is written, so a
    //    failed save leaves the text as it was.
    std::optional<TrimPlan> trim;
    if (trimTrailingWhitespaceApplies()) {
        const int64_t amount = UserDefaults::standardUserDefaults().integerForKey("VXTrimTrailingWhitespaceAmount");
        const Range selection = currentView()->selectedRange();
        const uint64_t length = m_contents->length();
        if (selection.end() <= length && selection.location <= kTrimLimit && length - selection.end() <= kTrimLimit)
            trim = planTrailingWhitespaceTrim(m_contents->string(), selection, amount);
    }
    auto bytes = trim ? encodedContents(trim->text, true) : encodedContents({}, false);
    if (!bytes) {
        if (error)
            *error = "The document “" + lastComponent(path) + "” couldn’t be saved in " +
                     localizedNameOfStringEncoding(m_contentsEncoding) +
                     ": it contains characters that encoding cannot hold.";
        return false;
    }

    // 2. The attributes of the file being replaced.
    struct stat before {};
    const bool existed = ::stat(path.c_str(), &before) == 0;
    const bool ownFile = m_fileURL && *m_fileURL == path;

    // 3. The new contents take the old file's place, keeping its owner, group, mode bits,
    //    extended attributes and hard links.
    const AtomicWriteResult written = replaceFileContents(path, *bytes);
    if (!written.ok) {
        if (error) *error = saveFailure(lastComponent(path), written);
        return false;
    }
    if (trim) {
        m_undoManager.beginUndoGrouping();
        replaceCharactersUndoably({0, m_contents->length()}, trim->text);
        m_undoManager.endUndoGrouping();
        currentView()->setSelectedRange(trim->selection);
        VXGoodLog("Trim");
    }

    // 4. Owner, group and permissions as they were (the write above already kept them; this
    //    repairs what a file system may have changed behind it).
    struct stat after {};
    if (existed && operation != SaveOperation::SaveAs && ownFile && ::stat(path.c_str(), &after) == 0)
        repairAttributes(path, before, after);

    if (operation == SaveOperation::SaveTo) return true;
    m_fileURL = path;
    m_fileType = type;
    m_changeCount = 0;
    // Our own write is not a change made by another application.
    m_lastReadStat = Clock::now();
    m_diskStamp = fileStampForPath(path);

    // 5. The name may have changed: choose the language again and set up the tab information for
    // the (possibly new) extension. What the detector chose is not recorded for the extension:
    // only a language the user picks is, so that a language's own defaults keep applying.
    if (auto language = chooseLanguage(path, *m_contents)) {
        m_language = *language;
        if (!userHasChangedIndentationContext) setUpTabInfoWithDDLang(defaultDetectorLanguage());
    }
    return true;
}

}  // namespace vx
