#include <Orv/Exception.h>

#include <memory>

namespace {

template <class T> class ExceptionFamily : public testing::Test {
};
using Family = testing::Types<Orv::Exception::Base, Orv::Exception::InvalidData, Orv::Exception::Canceled>;
TYPED_TEST_SUITE(ExceptionFamily, Family, );

TYPED_TEST(ExceptionFamily, CarriesItsMessage)
{
    for (const QString& message : {QString(), QStringLiteral("Datei fehlt, und mehr als ein kurzer Text: größe ✓")}) {
        auto original = std::make_unique<TypeParam>(message);
        const TypeParam copy(*original);
        original.reset(); // the copy owns its message
        try {
            throw copy;
        } catch (const Orv::Exception::Base& exception) {
            EXPECT_EQ(exception.message(), message);
            EXPECT_EQ(exception.what(), message.toStdString());
        }
    }
}

static_assert(!std::is_base_of_v<Orv::Exception::InvalidData, Orv::Exception::Canceled>);
static_assert(!std::is_base_of_v<Orv::Exception::Canceled, Orv::Exception::InvalidData>);
static_assert(std::is_base_of_v<std::exception, Orv::Exception::Base>);

} // namespace
