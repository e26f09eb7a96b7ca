#pragma once
// Evaluates a collected GenICam description against a replayed device's
// register image, in process and without a network: which register a
// command writes, and what the trigger, acquisition and image features say
// now. Aravis's GenICam engine does the evaluation (every construct a real
// description uses: converters, swiss knives, selectors, indexed
// registers), answering its register reads from the image.
//
// Aravis's description parser is not safe to run on several threads at
// once, so every use here is serialised on one process-wide lock.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::sim {

class RegisterImage;

struct RegisterRange final {
    std::uint32_t address = 0;
    std::uint32_t length = 0;

    bool overlaps(std::uint32_t begin, std::size_t size) const
    {
        return std::uint64_t{begin} < std::uint64_t{address} + length && address < std::uint64_t{begin} + size;
    }
};

class GenicamEvaluator final {
public:
    // image must outlive the evaluator. Null with a message when the
    // description cannot be parsed or has no "Root" category.
    static std::unique_ptr<GenicamEvaluator> create(std::string_view xml, RegisterImage& image, std::string& error);
    ~GenicamEvaluator();
    GenicamEvaluator(const GenicamEvaluator&) = delete;
    GenicamEvaluator& operator=(const GenicamEvaluator&) = delete;

    // The register a feature's value lives in (following pValue links),
    // if the description names one.
    std::optional<RegisterRange> registerOf(const std::string& feature) const;

    // Current values; nothing when the feature is missing, of another type
    // or cannot be evaluated.
    std::optional<std::int64_t> integer(const std::string& feature) const;
    std::optional<double> floating(const std::string& feature) const;
    std::optional<bool> boolean(const std::string& feature) const;
    std::optional<std::string> enumerationEntry(const std::string& feature) const;
    std::optional<std::int64_t> enumerationValue(const std::string& feature) const;
    // Writes a float feature's register in the image, read-only ones too;
    // false when the feature has no register to hold the value.
    bool setFloating(const std::string& feature, double value);

private:
    struct Private;
    explicit GenicamEvaluator(std::unique_ptr<Private> d);
    std::unique_ptr<Private> d;
};

} // namespace quorvex::sim
