#include "projects/quick_open.hpp"

#include <dirent.h>
#include <sys/stat.h>
#include <unicode/coll.h>
#include <unicode/locid.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <numeric>
#include <thread>

#include "platform/unicode.hpp"
#include "platform/user_defaults.hpp"
#include "projects/component_match.hpp"
#include "projects/path_filter.hpp"
#include "projects/quick_open_score.hpp"

namespace vx {

bool quickOpenHonorsIgnoreFiles() {
    auto value = UserDefaults::standardUserDefaults().objectForKey(kVXQuickOpenHonorsIgnoreFiles);
    return !value || UserDefaults::standardUserDefaults().boolForKey(kVXQuickOpenHonorsIgnoreFiles);
}

std::string QuickOpenIndex::root() const {
    std::lock_guard lock(m_mutex);
    return m_root;
}

void QuickOpenIndex::rootChanged(const std::string& newRoot, bool force) {
    {
        std::lock_guard lock(m_mutex);
        if (!force && newRoot == m_root) return;
        m_root = newRoot;
    }
    buildIndex();
}

// One walk fills both indexes: it runs on the files queue into the files index and a private
// folders index, which the folders queue takes over once the walk is done. The folders queue
// waits for it in the meantime, so a folder search posted after this rebuild still sees its result.
void QuickOpenIndex::buildIndex() {
    struct Handoff {
        std::promise<void> done;
        path_collection directories;
    };
    auto handoff = std::make_shared<Handoff>();
    auto walked = handoff->done.get_future().share();
    searchIndexFiles.queue.async([this, handoff] {
        VXBuildQuickOpenIndexesInto(root(), searchIndexFiles, handoff->directories, m_honorsIgnoreFiles);
        handoff->done.set_value();
    });
    searchIndexDirectories.queue.async([this, handoff, walked] {
        walked.wait();
        searchIndexDirectories.items = std::move(handoff->directories.items);
        searchIndexDirectories.text = std::move(handoff->directories.text);
    });
}

void QuickOpenIndex::waitUntilIdle() {
    searchIndexFiles.queue.sync([] {});
    searchIndexDirectories.queue.sync([] {});
}

QuickOpenIndex& ActionPanelFileModule::sharedIndex() {
    static QuickOpenIndex* index = new QuickOpenIndex;  // lives as long as the process
    return *index;
}

bool localizedStandardLess(const std::string& a, const std::string& b) {
    thread_local std::unique_ptr<icu::Collator> collator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::Collator> made(icu::Collator::createInstance(icu::Locale::getRoot(), status));
        if (made && U_SUCCESS(status)) {
            made->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
            made->setStrength(icu::Collator::SECONDARY);  // case differences do not order
        }
        return made;
    }();
    if (!collator) return a < b;
    UErrorCode status = U_ZERO_ERROR;
    const UCollationResult order = collator->compareUTF8(a, b, status);
    if (U_FAILURE(status) || order == UCOL_EQUAL) return a < b;
    return order == UCOL_LESS;
}

namespace {

std::string joinRoot(const std::string& root, std::string_view relativePath) {
    std::string joined = root;
    if (joined.empty() || joined.back() != '/') joined += '/';
    return joined.append(relativePath);
}

// A path that matched, before it becomes a row.
struct Candidate {
    const path_item* item = nullptr;
    double score = 0;
    bool ignored = false;
};

constexpr size_t kRowLimit = 100;   // rows are inserted until their count exceeds this
constexpr size_t kMatchChunk = 4096;
constexpr size_t kScoreChunk = 256;

// Sorts on every core: runs sorted side by side, then merged pairwise, each round side by side.
template <class T, class Less>
void concurrentSort(std::vector<T>& items, Less less) {
    const size_t cores = std::max(1u, std::thread::hardware_concurrency());
    const size_t runs = std::min(cores, items.size() / kMatchChunk + 1);
    std::vector<size_t> bounds(runs + 1);
    for (size_t r = 0; r <= runs; ++r) bounds[r] = items.size() * r / runs;
    concurrentApply(runs, [&](size_t r) { std::sort(items.begin() + bounds[r], items.begin() + bounds[r + 1], less); });
    for (size_t width = 1; width < runs; width *= 2) {
        const size_t merges = (runs + 2 * width - 1) / (2 * width);
        concurrentApply(merges, [&](size_t m) {
            const size_t first = m * 2 * width, middle = std::min(first + width, runs), last = std::min(first + 2 * width, runs);
            if (middle < last)
                std::inplace_merge(items.begin() + bounds[first], items.begin() + bounds[middle], items.begin() + bounds[last], less);
        });
    }
}

// Step 5 a-c of the search for one item: the length pre-check and the right-to-left match of
// the components, with the last query component required to match the last path component.
bool itemMatches(const path_item& item, const std::vector<std::string_view>& query, size_t queryBytes) {
    if (queryBytes > static_cast<size_t>(item.pathLength) + 2) return false;
    if (item.componentCount == 0 || query.empty()) return false;
    ReverseComponents components(item.lower());
    std::string_view component;
    components.next(component);
    if (!componentIsMatch(component, query.back())) return false;  // matchesLast
    size_t remaining = query.size() - 1;
    while (remaining > 0 && components.next(component))
        if (componentIsMatch(component, query[remaining - 1])) --remaining;
    return remaining == 0;
}

void scoreCandidate(Candidate& candidate, const std::vector<std::string_view>& query, const std::string& root, double now) {
    thread_local std::vector<std::string_view> path, lower;
    thread_local std::string performPath;
    splitPathComponents(candidate.item->path(), path);
    splitPathComponents(candidate.item->lower(), lower);
    const auto placement = SubstringFinder(query, lower);
    if (!placement || path.size() != lower.size()) {
        candidate.ignored = true;
        return;
    }
    performPath = joinRoot(root, candidate.item->path());
    std::optional<double> age;
    struct stat info;
    if (::lstat(performPath.c_str(), &info) == 0) age = now - static_cast<double>(info.st_mtim.tv_sec);
    candidate.score = quickOpenScore(query, path, lower, *placement, age);
}

ActionPanelGenericItem rowFor(const std::string& root, std::string_view relativePath, double score) {
    ActionPanelGenericItem row;
    const size_t slash = relativePath.rfind('/');
    row.name = std::string(slash == std::string_view::npos ? relativePath : relativePath.substr(slash + 1));
    row.displayPath = std::string(relativePath);
    row.performPath = joinRoot(root, relativePath);
    row.score = score;
    return row;
}

size_t characterCount(std::string_view text) {
    return static_cast<size_t>(std::count_if(text.begin(), text.end(),
                                             [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

struct SearchJob {
    std::string lowerQuery;
    std::vector<std::string_view> components;  // views into lowerQuery
    size_t characters = 0;
    bool directories = false;
    std::weak_ptr<QuickOpenDelegate> delegate;
};

void runSearch(const SearchJob& job, path_collection& collection, const std::string& root) {
    auto finish = [&] {
        if (auto delegate = job.delegate.lock()) delegate->anythread_finishedPrimary();
    };
    const size_t count = collection.items.size();
    if ((job.characters == 1 && count >= 501) || (job.characters == 2 && count >= 5001)) {
        finish();
        return;
    }

    // Matching, in chunks spread over the cores; chunks keep index order.
    const size_t chunks = (count + kMatchChunk - 1) / kMatchChunk;
    std::vector<std::vector<Candidate>> found(chunks);
    std::atomic<bool> delegateGone{false};
    concurrentApply(chunks, [&](size_t chunk) {
        const size_t end = std::min(count, (chunk + 1) * kMatchChunk);
        for (size_t i = chunk * kMatchChunk; i < end; ++i) {
            if (job.delegate.expired()) {
                delegateGone = true;
                return;
            }
            const path_item& item = collection.items[i];
            if (itemMatches(item, job.components, job.lowerQuery.size())) found[chunk].push_back({&item});
        }
    });
    if (delegateGone) return;
    std::vector<Candidate> results;
    results.reserve(std::accumulate(found.begin(), found.end(), size_t{0},
                                    [](size_t sum, const auto& part) { return sum + part.size(); }));
    for (auto& part : found) results.insert(results.end(), part.begin(), part.end());

    const double now = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    concurrentApply((results.size() + kScoreChunk - 1) / kScoreChunk, [&](size_t chunk) {
        const size_t end = std::min(results.size(), (chunk + 1) * kScoreChunk);
        for (size_t i = chunk * kScoreChunk; i < end; ++i) scoreCandidate(results[i], job.components, root, now);
    });
    concurrentSort(results, [](const Candidate& a, const Candidate& b) {
        if (a.score != b.score) return a.score > b.score;
        return a.item->path() < b.item->path();
    });

    auto delegate = job.delegate.lock();
    if (!delegate) return;
    size_t inserted = 0;
    if (job.directories) {
        const Candidate* folder = nullptr;
        for (const auto& candidate : results)
            if (!candidate.ignored) {
                folder = &candidate;
                break;
            }
        if (!folder && results.size() == 1) folder = &results.front();
        if (folder) {
            const std::string relative(folder->item->path());
            const std::string absolute = joinRoot(root, relative);
            std::vector<std::string> names;
            if (DIR* dir = ::opendir(absolute.c_str())) {
                while (const dirent* entry = ::readdir(dir)) {
                    const std::string_view name = entry->d_name;
                    if (name != "." && name != "..") names.emplace_back(name);
                }
                ::closedir(dir);
            }
            std::sort(names.begin(), names.end(), localizedStandardLess);
            for (const auto& name : names) {
                delegate->anythread_insertItem(rowFor(root, relative + "/" + name, 0));
                if (++inserted > kRowLimit) break;
            }
        }
    } else {
        for (const auto& candidate : results) {
            if (candidate.ignored) continue;
            delegate->anythread_insertItem(rowFor(root, candidate.item->path(), candidate.score));
            if (++inserted > kRowLimit) break;
        }
    }
    delegate->anythread_finishedPrimary();
    delegate->anythread_reload();
}

}  // namespace

bool ActionPanelFileModule::startSearch() {
    auto job = std::make_shared<SearchJob>();
    if (!query.empty() && query.back() == '/') {
        if (query.size() < 2) return false;
        query.pop_back();
        job->directories = true;
    }
    job->lowerQuery = lowercasePath(query);
    splitPathComponents(job->lowerQuery, job->components);
    job->characters = characterCount(query);
    job->delegate = delegate;
    path_collection& collection = job->directories ? m_index.searchIndexDirectories : m_index.searchIndexFiles;
    QuickOpenIndex& index = m_index;
    collection.queue.async([job, &collection, &index] { runSearch(*job, collection, index.root()); });
    return true;
}

namespace {

class CollectingDelegate final : public QuickOpenDelegate {
public:
    std::vector<ActionPanelGenericItem> rows;
    void anythread_insertItem(const ActionPanelGenericItem& item) override { rows.push_back(item); }
    void anythread_finishedPrimary() override {}
    void anythread_reload() override {}
};

}  // namespace

std::vector<ActionPanelGenericItem> quickOpenRows(QuickOpenIndex& index, const std::string& query) {
    auto collector = std::make_shared<CollectingDelegate>();
    ActionPanelFileModule module(index);
    module.query = query;
    module.delegate = collector;
    if (module.startSearch()) index.waitUntilIdle();
    return std::move(collector->rows);
}

}  // namespace vx
