// The two forms of a pattern: conversion there and back, and the splitting of SIP patterns.

#include <gtest/gtest.h>

#include "EntryForm.h"

namespace callrecordingctl {
namespace {

struct FormRow {
    CallType type;
    char const* entry;
    char const* stored;
};

TEST(EntryForm, IsStoredAndShownAgain) {
    FormRow const rows[] = {
        {CALL_TYPE_NUMBER, "", ""},
        {CALL_TYPE_NUMBER, "00{49-59,!50}[0,5]?*", "00<49-59,!50>[0,5]?*"},
        {CALL_TYPE_NUMBER2, "\\*\\?\\,\\-\\!", "#^@%:"},
        {CALL_TYPE_ANY, "[1-3,\\*]{a\\,b}", "[1-3,#]<a@b>"},
        {CALL_TYPE_SIP, "*@*", "*@*"},
        {CALL_TYPE_SIP, "@pbx", "@pbx"},
        {CALL_TYPE_SIP, "alice@pbx:", "alice@pbx:"},
        {CALL_TYPE_SIP, "a{01-20}@gw[1,2].x:506{0-1}", "a<01-20>@gw[1,2].x:506<0-1>"},
        {CALL_TYPE_SIP, "a\\,b@h\\-x:50\\,60", "a@b@h%x:50@60"},
        {CALL_TYPE_SIP, "a\\!b@h\\!x:*", "a:b@h:x:*"},
    };
    for (FormRow const& row : rows) {
        StoredPattern const converted = ToStored(row.entry, row.type);
        EXPECT_FALSE(converted.problem) << row.entry << ": " << converted.problem->message;
        EXPECT_EQ(converted.stored, row.stored) << row.entry;
        EXPECT_EQ(ToEntry(row.stored, row.type), row.entry);
        EXPECT_FALSE(ExplainStored(row.stored, row.type)) << row.stored;
    }
}

struct ProblemRow {
    CallType type;
    char const* pattern;
    std::size_t position;
    char const* message; // A part of it.
};

template <typename Problem>
void ExpectProblem(ProblemRow const& row, Problem const& problem) {
    ASSERT_TRUE(problem) << row.pattern;
    EXPECT_EQ(problem->position, row.position) << row.pattern;
    EXPECT_NE(problem->message.find(row.message), std::string::npos)
        << row.pattern << ": " << problem->message;
}

TEST(EntryForm, SaysWhatIsWrongAndWhere) {
    ProblemRow const rows[] = {
        {CALL_TYPE_NUMBER, "12-3", 2, "\"-\""},
        {CALL_TYPE_NUMBER, "a@b", 1, "sip"},
        {CALL_TYPE_SIP, "alice", 5, "user@host"},
        {CALL_TYPE_SIP, "alice:5060", 10, "user@host"},
        {CALL_TYPE_SIP, "sip:alice@pbx", 3, "leave out \"sip:\""},
        {CALL_TYPE_SIP, "sip:alice@pbx:5060", 3, "\":\""},
        {CALL_TYPE_SIP, "alice@[::1]:5060", 7, "IPv6"},
        {CALL_TYPE_SIP, "a@b@c", 1, "\"@\""},
        {CALL_TYPE_SIP, "alice@p-x", 7, "\"-\""},
        {CALL_TYPE_SIP, "alice@pbx:5-6", 11, "\"-\""},
        {CALL_TYPE_SIP, "a@h\\,x", 3, "would end the user part"},
        {CALL_TYPE_SIP, "a\\!b@h", 1, "add the port"},
        {CALL_TYPE_SIP, "a@b\\!h", 3, "add the port"},
        {CALL_TYPE_SIP, "a@h:1\\!2", 5, "begin the port"},
    };
    for (ProblemRow const& row : rows)
        ExpectProblem(row, ToStored(row.pattern, row.type).problem);
}

TEST(EntryForm, ShowsWhatAHandWroteAsItIs) {
    ProblemRow const rows[] = {
        {CALL_TYPE_NUMBER, "1{2-3}", 1, "between < and >"},
        {CALL_TYPE_SIP, "\\*1@pbx", 0, "no \"\\\""},
        {CALL_TYPE_SIP, "sip:a@b", 3, "leave out"},
        {CALL_TYPE_NUMBER, "5-1", 1, "\"-\""},
    };
    for (ProblemRow const& row : rows) {
        EXPECT_EQ(ToEntry(row.pattern, row.type), row.pattern);
        ExpectProblem(row, ExplainStored(row.pattern, row.type));
    }
}

} // namespace
} // namespace callrecordingctl
