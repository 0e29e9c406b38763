#include "comparison.h"

#include "tools/frames/output_file.h"
#include "tools/frames/picture_file.h"
#include "tools/frames/png_file.h"

#include <doctest/doctest.h>
#include <filesystem>
#include <unistd.h>

namespace {

// A directory of references, which goes at the end of a test.
struct reference_directory {
    std::string path;

    reference_directory()
    {
        char pattern[] = "/tmp/brimlow-compare-XXXXXX";
        const char* made = mkdtemp(pattern);
        REQUIRE(made);
        path = made;
    }
    ~reference_directory()
    {
        std::filesystem::remove_all(path);
    }
    reference_directory(const reference_directory&) = delete;
    reference_directory& operator=(const reference_directory&) = delete;

    void keep(const std::string& name, const picture& p, const std::string& driver) const
    {
        const std::vector<png_text> texts(driver.empty() ? 0 : 1, {"Driver", driver});
        const std::vector<uint8_t> png = encode_png(p, texts);
        std::string error;
        REQUIRE(write_file(path + "/" + name, png, error));
    }
    bool has(const std::string& name) const
    {
        return std::filesystem::exists(path + "/" + name);
    }
};

} // namespace

// Grey, with `count` of its 100 pixels brighter by `step`.
static picture grey(uint32_t count = 0, uint8_t step = 0)
{
    picture p = make_picture(10, 10, 100, 100, 100);
    for (size_t i = 0; i < size_t{count} * 3; ++i)
        p.rgb[i] = static_cast<uint8_t>(p.rgb[i] + step);
    return p;
}

static reference_picture only_reference(const reference_directory& directory)
{
    std::vector<reference_picture> references;
    std::string problem;
    REQUIRE(load_references(directory.path, references, problem));
    REQUIRE(references.size() == 1);
    return references[0];
}

TEST_CASE("References are the numbered pictures, by frame, with their drivers")
{
    const reference_directory directory;
    directory.keep("00100.png", grey(), "a driver 1.0");
    directory.keep("20.png", grey(1, 1), "");
    directory.keep("00100.new.png", grey(), "");
    directory.keep("00100.difference.png", grey(), "");
    directory.keep("sheet.png", grey(), "");
    std::vector<reference_picture> references;
    std::string problem;
    REQUIRE(load_references(directory.path, references, problem));
    REQUIRE(references.size() == 2);
    CHECK(references[0].frame == 20);
    CHECK(references[0].driver.empty());
    CHECK(references[0].image.rgb == grey(1, 1).rgb);
    CHECK(references[1].frame == 100);
    CHECK(references[1].driver == "a driver 1.0");
}

TEST_CASE("Directories without references, or with two of one frame, or of two sizes, are refused")
{
    const auto problem_of = [](const reference_directory& directory) {
        std::vector<reference_picture> references;
        std::string problem;
        CHECK_FALSE(load_references(directory.path, references, problem));
        return problem;
    };
    const reference_directory directory;
    CHECK(problem_of(directory).find("no numbered pictures") != std::string::npos);
    directory.keep("7.png", grey(), "");
    directory.keep("007.png", grey(), "");
    CHECK(problem_of(directory).find("the same frame") != std::string::npos);
    unlink((directory.path + "/007.png").c_str());
    directory.keep("8.png", make_picture(10, 9, 0, 0, 0), "");
    CHECK(problem_of(directory).find("differ in size") != std::string::npos);
    std::string error;
    REQUIRE(write_file(directory.path + "/8.png", {}, error));
    CHECK(problem_of(directory).find("8.png") != std::string::npos);

    std::vector<reference_picture> references;
    std::string problem;
    CHECK_FALSE(load_references("/nonexistent", references, problem));
    CHECK(problem.find("/nonexistent") != std::string::npos);
}

TEST_CASE("The same driver must make the same bytes")
{
    const reference_directory directory;
    directory.keep("00001.png", grey(), "a driver 1.0");
    const reference_picture reference = only_reference(directory);
    const comparison_result same = compare_with_reference(reference, grey(), "a driver 1.0");
    CHECK(same.passed);
    CHECK(same.text == "00001.png: equal");
    CHECK_FALSE(compare_with_reference(reference, grey(1, 1), "a driver 1.0").passed); // one step in one pixel

    const char trademark[] = "Grey\xE2\x84\xA2 2.0"; // which a PNG cannot keep letter by letter
    directory.keep("00001.png", grey(), trademark);
    CHECK_FALSE(compare_with_reference(only_reference(directory), grey(1, 1), trademark).passed);
}

TEST_CASE("Another driver may round differently, but not draw something else")
{
    const reference_directory directory;
    directory.keep("00001.png", grey(), "a driver 1.0");
    const reference_picture reference = only_reference(directory);
    CHECK(compare_with_reference(reference, grey(), "a driver 1.1").passed);
    // Half of the pixels by two steps: 1.0 in the mean. By three: 1.5.
    const comparison_result close = compare_with_reference(reference, grey(50, 2), "a driver 1.1");
    CHECK(close.passed);
    CHECK(close.text == "00001.png: close, by 1.000 of 255 in the mean, at most 2, in 50 pixels (another driver)");
    CHECK_FALSE(compare_with_reference(reference, grey(50, 3), "a driver 1.1").passed);
    CHECK_FALSE(compare_with_reference(reference, grey(2, 80), "a driver 1.1").passed); // 1.6, in one place
}

TEST_CASE("A difference in one colour alone counts in full")
{
    const reference_directory directory;
    directory.keep("00001.png", grey(), "a driver 1.0");
    picture redder = grey();
    for (size_t i = 0; i < redder.rgb.size(); i += 3)
        redder.rgb[i] = 102; // 2 in red, 0.67 over all
    CHECK_FALSE(compare_with_reference(only_reference(directory), redder, "a driver 1.1").passed);
}

TEST_CASE("A failure shows itself in pictures, and the next success takes them away")
{
    const reference_directory directory;
    directory.keep("00001.png", grey(), "a driver 1.0");
    const reference_picture reference = only_reference(directory);
    CHECK_FALSE(compare_with_reference(reference, grey(1, 5), "a driver 1.0").passed);
    picture shown;
    std::string error;
    REQUIRE(load_png(directory.path + "/00001.difference.png", shown, error));
    CHECK(shown.rgb[0] == 40); // eight times
    CHECK(shown.rgb[3] == 0);
    REQUIRE(load_png(directory.path + "/00001.new.png", shown, error));
    CHECK(shown.rgb == grey(1, 5).rgb);
    CHECK(compare_with_reference(reference, grey(), "a driver 1.0").passed);
    CHECK_FALSE(directory.has("00001.difference.png"));
    CHECK_FALSE(directory.has("00001.new.png"));
    CHECK(directory.has("00001.png"));
}

TEST_CASE("A picture of another size is a failure, whatever the driver")
{
    const reference_directory directory;
    directory.keep("00001.png", grey(), "a driver 1.0");
    CHECK_FALSE(compare_with_reference(only_reference(directory), make_picture(9, 10, 1, 1, 1), "another").passed);
}
