#pragma once

#include "tests/support/ServicesHome.h"

/// A user's folders with what the pictures show: models, records of several days.
class SampleHome : public orvane::test::ServicesHome
{
public:
    /// Before the services are made.
    SampleHome();

    /// The record that has a transcript with speakers, a correction, a protocol and questions.
    [[nodiscard]] static QUuid meeting();

    /// Recordings that a crash left, to be found by the services.
    void leaveRecordings() const;
};
