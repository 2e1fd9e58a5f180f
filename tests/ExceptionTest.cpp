#include <Orv/Exception.h>

#include <memory>

namespace {

template <class T> class ExceptionFamily : public testing::Test {
};
using Family = testing::Types<Orv::Exception::Base, Orv::Exception::InvalidData, Orv::Exception::Canceled>;
TYPED_TEST_SUITE(ExceptionFamily, Family, );

TYPED_TEST(ExceptionFamily, CarriesItsMessage)
{
    for (const QString& message : {QString(), QString::fromUtf8("Datei fehlt: größe ✓")}) {
        try {
            throw TypeParam(message);
        } catch (const Orv::Exception::Base& exception) {
            EXPECT_EQ(exception.message(), message);
            EXPECT_EQ(exception.what(), message.toStdString());
        }
    }
}

TYPED_TEST(ExceptionFamily, TextLivesAsLongAsTheException)
{
    auto original = std::make_unique<TypeParam>(QStringLiteral("some message longer than any short string"));
    const TypeParam copy(*original);
    const char* text = copy.what();
    original.reset();
    EXPECT_STREQ(text, "some message longer than any short string");
}

static_assert(!std::is_base_of_v<Orv::Exception::InvalidData, Orv::Exception::Canceled>);
static_assert(!std::is_base_of_v<Orv::Exception::Canceled, Orv::Exception::InvalidData>);
static_assert(std::is_base_of_v<std::exception, Orv::Exception::Base>);

} // namespace
