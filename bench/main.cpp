// Times every kernel, at every level and for several sizes, beside other libraries:
//
//   vidproc_bench [--benchmark_filter=REGEX]      e.g. '^scale10/1280' or '/vidproc-avx2$|/zimg' or
//   '^(noise|temporal)/'
//
// Contestants run in random turns, one thread each; the thread time of the fastest frame counts. The table compares
// each with the kernels of this library: 2.0 under "/ avx2" takes twice as long as vidproc-avx2. Google Benchmark's
// other options work as always; --benchmark_out=FILE keeps all results as JSON.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

/// Prints one table per contest when all turns are over.
class TableReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      const std::string name = run.run_name.function_name;
      if (run.error_occurred) {
        failures[name] = run.error_message;
        continue;
      }
      const std::size_t cut = name.rfind('/');
      const double ms = run.counters.at("ms");
      const auto [entry, isNew] = contests[name.substr(0, cut)].try_emplace(name.substr(cut + 1), ms);
      entry->second = std::min(entry->second, ms);
    }
  }

  void Finalize() override {
    for (const auto& [contest, fastest] : contests) Print(contest, fastest);
    for (const auto& [name, message] : failures) std::printf("\n%s: %s\n", name.c_str(), message.c_str());
  }

 private:
  using Fastest = std::map<std::string, double>;

  static void Print(const std::string& contest, const Fastest& fastest) {
    static const std::string kOwn[] = {"vidproc-neon", "vidproc-avx2", "vidproc-avx512", "vidproc-avx512vbmi"};
    std::vector<Fastest::const_iterator> columns;
    for (const std::string& own : kOwn) {
      if (const auto found = fastest.find(own); found != fastest.end()) columns.push_back(found);
    }
    std::printf("\n%-36s %9s", contest.c_str(), "ms");
    for (const auto& column : columns) std::printf(" %13s", ("/ " + column->first.substr(8)).c_str());
    std::vector<Fastest::const_iterator> rows;
    for (auto row = fastest.begin(); row != fastest.end(); ++row) rows.push_back(row);
    std::ranges::sort(rows, {}, [](const auto& row) { return row->second; });
    for (const auto& row : rows) {
      std::printf("\n  %-34s %9.4f", row->first.c_str(), row->second);
      for (const auto& column : columns) std::printf(" %13.2f", row->second / column->second);
    }
    std::printf("\n");
  }

  std::map<std::string, Fastest> contests;
  std::map<std::string, std::string> failures;
};

}  // namespace

int main(int argc, char** argv) {
  // Before the caller's options, which may overrule them.
  std::string defaults[] = {"--benchmark_enable_random_interleaving=true", "--benchmark_repetitions=10",
                            "--benchmark_min_time=0.02"};
  std::vector<char*> options = {argv[0]};
  for (std::string& option : defaults) options.push_back(option.data());
  options.insert(options.end(), argv + 1, argv + argc);
  int count = static_cast<int>(options.size());
  options.push_back(nullptr);
  benchmark::Initialize(&count, options.data());
  if (benchmark::ReportUnrecognizedArguments(count, options.data())) return 1;
  TableReporter reporter;
  if (benchmark::RunSpecifiedBenchmarks(&reporter) == 0) return 1;
  benchmark::Shutdown();
  return 0;
}
