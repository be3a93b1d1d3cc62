// The user's trigger phrases, and the texts that Vemo types for them.
import QtQuick

PhraseTab {
    title: qsTr("Shortcuts")
    question: qsTr("How to use shortcuts?")
    answer: qsTr("Shortcuts insert saved text blocks, like email signatures, using trigger phrases. Say \"here's my calendar\" and Vemo types your response.")
    samples: [
        { spoken: qsTr("Here's my calendar"), written: qsTr("You can book a time that suits you here: https://calendar.example/me") },
    ]
    emptySymbol: "command"
    emptyTitle: qsTr("No shortcuts created yet.")
    emptyText: qsTr("Create trigger phrases that automatically expand into full paragraphs or signatures.")
}
