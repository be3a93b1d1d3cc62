// The user's words, and how Vemo is to write them.
import QtQuick

PhraseTab {
    title: qsTr("Dictionary")
    question: qsTr("What is dictionary and how to use it?")
    answer: qsTr("Vemo learns your vocabulary, recognizing specialized terms and correcting errors. Add any word or phrase, and it will transcribe it as you intend.")
    samples: [
        { spoken: qsTr("Worcester"), written: qsTr("Worcestershire") },
        { spoken: qsTr("btw"), written: qsTr("By the way") },
        { spoken: qsTr("memo"), written: qsTr("vemo") },
    ]
    loadingText: qsTr("Syncing with cloud database…")
    emptySymbol: "character.book.closed.fill"
    emptyTitle: qsTr("No custom dictionary words yet.")
    emptyText: qsTr("Click '+ Add New' to train Vemo on acronyms, company names, or proper nouns.")
}
