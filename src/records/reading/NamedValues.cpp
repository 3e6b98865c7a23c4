// Takes the value whose name fits best.

#include "records/reading/NamedValues.h"

#include <fmt/format.h>

namespace CallRecordingUtils {

std::vector<NamedValues::Fit> const& NamedValues::FitsOf(std::string const& name) {
    auto const known = fits_.find(name);
    if (known != fits_.end())
        return known->second;
    // The records of one system have few names. A hostile file with ever new ones must not fill
    // memory.
    if (fits_.size() > 1000)
        fits_.clear();
    std::vector<Fit> fits;
    auto const add = [&fits](std::size_t place, std::size_t rank) {
        if (rank != ColumnNames::kNone)
            fits.push_back({place, rank});
    };
    for (std::size_t i = 0; i < kColumnCount; ++i)
        add(i, format_.names.Rank(static_cast<Column>(i), name));
    for (std::size_t i = 0; i < format_.wanted.size(); ++i)
        add(kColumnCount + i, RankAmong(format_.wanted[i].names, name));
    return fits_.emplace(name, fits).first->second;
}

void NamedValues::Begin(CallRecord& record) {
    record_ = &record;
    ranks_.assign(kColumnCount + format_.wanted.size(), ColumnNames::kNone);
    record.problem.clear();
    for (std::string& value : record.values)
        value.clear();
    record.wanted.resize(format_.wanted.size());
    for (std::string& value : record.wanted)
        value.clear();
    for (std::string& name : names_)
        name.clear();
}

/// Of values with equal names the last counts.
void NamedValues::Take(std::string const& name, std::string_view value) {
    if (name.size() > kLongest)
        return;
    for (Fit const& fit : FitsOf(name)) {
        if (fit.rank > ranks_[fit.place])
            continue;
        ranks_[fit.place] = fit.rank;
        bool const isColumn = fit.place < kColumnCount;
        (isColumn ? record_->values[fit.place] : record_->wanted[fit.place - kColumnCount]) = value;
        if (isFirst_ && isColumn)
            names_[fit.place] = name;
    }
}

void NamedValues::End() {
    record_->lacks = 0;
    for (std::size_t i = 0; i < format_.wanted.size(); ++i)
        if (ranks_[kColumnCount + i] == ColumnNames::kNone)
            record_->lacks |= 1U << i;
    for (Column const column : {kColumnFrom, kColumnTo})
        if (ranks_[column] == ColumnNames::kNone && record_->problem.empty()) {
            std::string const& given = format_.names.Given(column);
            record_->problem =
                given.empty()
                    ? fmt::format("it has no value \"{}\" or another name of it; {} names one",
                                  column == kColumnFrom ? "from" : "to",
                                  ColumnNames::Option(column))
                    : fmt::format("it has no value \"{}\"", given);
        }
    if (isFirst_ && record_->problem.empty()) {
        used_ = names_;
        isFirst_ = false;
    }
}

} // namespace CallRecordingUtils
