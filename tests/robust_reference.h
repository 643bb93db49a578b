// tests/data/robust_reference.txt: published data sets and what other programs make of them.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "places.h"

namespace stats_tests {

struct ReferenceSet {
    int n, p;
    std::vector<double> rows;
};
struct ReferenceEstimate {
    std::string kind, set;
    double breakdown, rejection;
    std::vector<double> mean, covariance;  // full
};

struct RobustReference {
    std::map<std::string, ReferenceSet> sets;
    std::vector<ReferenceEstimate> estimates;

    RobustReference() {
        std::ifstream file(KEF_SOURCE_DIR "/tests/data/robust_reference.txt");
        std::string text;
        const auto numbers = [&](int count) {
            std::vector<double> row;
            std::getline(file, text);
            std::istringstream words(text);
            for (std::string word; words >> word;) row.push_back(std::stod(word));
            EXPECT_EQ(count, int(row.size())) << text;
            row.resize(count);
            return row;
        };
        while (std::getline(file, text)) {
            std::istringstream words(text);
            std::string kind, name;
            words >> kind >> name;
            if (kind == "set") {
                ReferenceSet& set = sets[name];
                words >> set.n >> set.p;
                for (int j = 0; j < set.n; ++j)
                    for (double x : numbers(set.p)) set.rows.push_back(x);
            } else if (kind == "robust" || kind == "mle") {
                ReferenceEstimate e{kind, name, 0, 0, {}, {}};
                words >> e.breakdown >> e.rejection;
                const int p = sets.at(name).p;
                e.covariance.resize(p * p);
                for (int i = 0; i < p; ++i) {
                    const auto row = numbers(i + 2);
                    e.mean.push_back(row[0]);
                    for (int j = 0; j <= i; ++j)
                        e.covariance[i * p + j] = e.covariance[j * p + i] = row[j + 1];
                }
                estimates.push_back(e);
            }
        }
    }
    static const RobustReference& get() {
        static const RobustReference data;
        return data;
    }
    std::vector<ReferenceEstimate> of(const std::string& kind) const {
        std::vector<ReferenceEstimate> result;
        for (const auto& e : estimates)
            if (e.kind == kind) result.push_back(e);
        return result;
    }
};

}  // namespace stats_tests
