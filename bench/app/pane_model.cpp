// Times what a pane does from memory once a large folder is listed: applying a filter and sorting
// again, each through the pane model itself (the same calls the window makes), so the figures hold
// the filtering, the sort, the ".." row and the selection pass. Prints the median of each step.
//
//   pane_model FOLDER [ROUNDS]
#include "AppSettings.h"
#include "files/FileSorter.h"
#include "panes/KindTexts.h"
#include "panes/PaneViewController.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using orbisk::PaneViewController;
using orbisk::SortColumn;
using orbisk::SortSpec;

struct Step {
    const char* label;
    std::function<void(PaneViewController&)> run;
    std::vector<double> wall{};
    std::vector<double> cpu{};
};

/// CPU time of this thread in milliseconds: other people's work on a shared machine stretches the
/// wall clock but hardly this.
double threadCpuMilliseconds()
{
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double median(std::vector<double> values)
{
    std::ranges::sort(values);
    const auto middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: pane_model FOLDER [ROUNDS]\n");
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 7;

    QTemporaryDir settingsDir;
    orbisk::AppSettings settings(settingsDir.filePath(QStringLiteral("settings.ini")));
    settings.setWatchDirectories(false);
    orbisk::PaneServices services;
    services.settings = &settings;
    // As the window does: kind texts kept for the life of the window, shared with the workers.
    auto kinds = std::make_shared<orbisk::KindTexts>();
    services.describe = [kinds](const orbisk::FileItem& item) { return kinds->describe(item); };
    PaneViewController pane(orbisk::Side::left, services);

    QElapsedTimer loading;
    loading.start();
    pane.navigate(folder);
    if (!QTest::qWaitFor([&] { return !pane.isLoading(); }, 600'000) || pane.rows().size() < 2) {
        std::fprintf(stderr, "pane_model: could not list %s\n", folder.c_str());
        return 1;
    }
    std::printf("listed %zu rows in %lld ms (read, ranks and first sort on the worker)\n", pane.rows().size(),
                static_cast<long long>(loading.elapsed()));

    // Each step starts from the state the one before it left, as a user's clicks would.
    const auto sortBy = [](SortColumn column, bool ascending) {
        return [=](PaneViewController& p) { p.setSort(SortSpec{column, ascending}); };
    };
    std::vector<Step> steps{
        {"filter \"IMG\" (plain text)", [](auto& p) { p.filterChanged("IMG"); }},
        {"filter cleared", [](auto& p) { p.filterChanged(""); }},
        {"filter \"übersicht\" (needs Unicode folding)", [](auto& p) { p.filterChanged("übersicht"); }},
        {"filter \"*.jpg;*.pdf\" (wildcards)", [](auto& p) { p.filterChanged("*.jpg;*.pdf"); }},
        {"filter cleared", [](auto& p) { p.filterChanged(""); }},
        {"sort by name, descending", sortBy(SortColumn::name, false)},
        {"sort by size", sortBy(SortColumn::size, true)},
        {"sort by date", sortBy(SortColumn::date, true)},
        {"sort by kind", sortBy(SortColumn::kind, true)},
        {"sort by name", sortBy(SortColumn::name, true)},
        // For comparison: the same order made by sorting copies of the items with collation keys
        // built each time, which is what every change of sort or filter cost before the ranks
        // were kept with the listing.
        {"(sort by name without the listing's ranks)",
         [&](auto& p) {
             (void)orbisk::FileSorter::sorted(p.activeTab().listing->items, SortSpec{SortColumn::name, true}, true, {},
                                              services.describe);
         }},
    };
    const int generation = pane.loadGeneration();
    for (int round = 0; round < rounds; ++round) {
        for (auto& step : steps) {
            QElapsedTimer timer;
            const double cpuStart = threadCpuMilliseconds();
            timer.start();
            step.run(pane);
            step.wall.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
            step.cpu.push_back(threadCpuMilliseconds() - cpuStart);
        }
    }
    if (pane.loadGeneration() != generation) {
        std::fprintf(stderr, "pane_model: a step read the folder again\n");
        return 1;
    }

    std::printf("\n| step (%zu items, median of %d) | wall (ms) | CPU (ms) |\n|---|---:|---:|\n",
                pane.activeTab().listing->items.size(), rounds);
    for (const auto& step : steps)
        std::printf("| %s | %.1f | %.1f |\n", step.label, median(step.wall), median(step.cpu));
    return 0;
}
