// The catalogue of localized phrases: member name and English text, which is also the key that
// the translations are looked up by. Kept as X-macro lists so that the declarations, the
// definitions and the table behind Localize::entries() come from this one place.
//
// A member name is the English text in lower camel case without punctuation; a name that is a
// C++ keyword (or was one of the framework's reserved words) ends in "String", which is not part
// of the text. Changing an English text changes its key: po/*.po must follow.
#pragma once

// clang-format off
#define QUOD_LOCALIZE_PLAIN_ENTRIES(X) \
    X(preferences, "Preferences") \
    X(tab, "Tab") \
    X(noItems, "No Items") \
    X(group, "Group") \
    X(anErrorOccurredWhileSaving, "An error occurred while saving.") \
    X(pleaseTryAgain, "Please try again.") \
    X(ok, "OK") \
    X(count, "Count") \
    X(add, "Add") \
    X(addTheFoldersFromWhereYourJobsAreLinked, "Add the folders from where your jobs are linked.") \
    X(advanced, "Advanced") \
    X(advancedFind, "Advanced Find") \
    X(advancedFindAndReplace, "Advanced Find and Replace") \
    X(agent, "Agent") \
    X(all, "All") \
    X(allDocuments, "All Documents") \
    X(allUsers, "All Users") \
    X(alwaysShowToolbarInFullScreen, "Always show toolbar in full screen") \
    X(anErrorOccurredInRetrievingUpdateInformation, "An error occurred in retrieving update information. Please try again later.") \
    X(anUnknownErrorOccurred, "An unknown error occurred.") \
    X(anUnknownErrorOccurredWhenFetchingTheLog, "An unknown error occurred when fetching the log.") \
    X(application, "Application") \
    X(atStartupAndWhenSaving, "At startup and when saving") \
    X(autoComplete, "Auto Complete:") \
    X(automatic, "Automatic") \
    X(automaticallyOpenInTabs, "Automatically open in tabs") \
    X(autosave, "Autosave") \
    X(back, "Back") \
    X(cancel, "Cancel") \
    X(cannotAuthenticate, "Cannot authenticate.") \
    X(cannotFindAnyColumns, "Cannot find any columns.") \
    X(change, "Change") \
    X(changeEncoding, "Change Encoding") \
    X(check, "Check") \
    X(chooseAnExistingScriptOrWriteANew, "Choose an existing script or write a new") \
    X(chooseWhatYouWantToRun, "Choose what you want to run") \
    X(clearMenu, "Clear Menu") \
    X(clearRecentSearches, "Clear Recent Searches") \
    X(clients, "Clients") \
    X(close, "Close") \
    X(colors, "Colors") \
    X(columns, "Columns") \
    X(command, "Command") \
    X(commands, "Commands") \
    X(compare, "Compare") \
    X(connect, "Connect") \
    X(convertLineEndingsWhenSaving, "Convert line endings when saving") \
    X(copyColumn, "Copy Column") \
    X(copyRow, "Copy Row") \
    X(couldNotEstablishCommunicationWithHelperTool, "Could not establish communication with helper tool.") \
    X(couldntSaveDocument, "Couldn’t save document.") \
    X(couldNotUpdate, "Could not update.") \
    X(currentDocument, "Current Document") \
    X(date, "Date") \
    X(day, "Day") \
    X(dayOfMonth, "Day of Month") \
    X(dayOfWeek, "Day of Week") \
    X(dayOfYear, "Day of Year") \
    X(deleteString, "Delete") \
    X(deleteColumn, "Delete Column") \
    X(deleteCommand, "Delete Command") \
    X(deleted, "Deleted") \
    X(deleteRow, "Delete Row") \
    X(deleteSnippet, "Delete Snippet") \
    X(deprecated, "Deprecated") \
    X(disabled, "Disabled") \
    X(discardChanges, "Discard Changes") \
    X(document, "Document") \
    X(documents, "Documents") \
    X(done, "Done") \
    X(download, "Download") \
    X(downloading, "Downloading…") \
    X(duplicate, "Duplicate") \
    X(edit, "Edit") \
    X(editPlist, "Edit Plist") \
    X(editScript, "Edit Script…") \
    X(enabled, "Enabled") \
    X(encoding, "Encoding") \
    X(everyDay, "Every Day") \
    X(everyHour, "Every Hour") \
    X(everyone, "Everyone") \
    X(exclude, "Exclude") \
    X(exportString, "Export") \
    X(extraWindow, "Extra Window") \
    X(fileExtension, "File Extension") \
    X(fileNameExtension, "File Name Extension") \
    X(filter, "Filter") \
    X(find, "Find") \
    X(findResults, "Find Results") \
    X(folder, "Folder") \
    X(folders, "Folders") \
    X(forString, "For") \
    X(forward, "Forward") \
    X(functions, "Functions") \
    X(general, "General") \
    X(go, "Go") \
    X(gravity, "Gravity") \
    X(grid, "Grid") \
    X(groups, "Groups") \
    X(help, "Help") \
    X(hexView, "Hex View") \
    X(hide, "Hide") \
    X(hidden, "Hidden") \
    X(hour, "Hour") \
    X(identifier, "Identifier") \
    X(idle, "Idle") \
    X(ignoreCase, "Ignore Case") \
    X(image, "Image") \
    X(importString, "Import") \
    X(includeStandardWords, "Include standard words") \
    X(indentNewLinesAutomatically, "Indent new lines automatically") \
    X(info, "Info") \
    X(inlineString, "Inline") \
    X(inSelection, "In Selection") \
    X(insert, "Insert") \
    X(insertSnippet, "Insert Snippet") \
    X(internalHelperTools, "Internal Helper Tools") \
    X(key, "Key") \
    X(kind, "Kind") \
    X(kinds, "Kinds") \
    X(language, "Language") \
    X(launchAgainIfItCrashes, "Launch again if it crashes") \
    X(length, "Length") \
    X(limits, "Limits") \
    X(line, "Line") \
    X(lines, "Lines") \
    X(list, "List") \
    X(log, "Log") \
    X(loginItems, "Login Items") \
    X(magnet, "Magnet") \
    X(makeSureThatTheSelectedTextIncludesColumns, "Make sure that the selected text includes columns.") \
    X(me, "Me") \
    X(message, "Message") \
    X(miscellaneous, "Miscellaneous") \
    X(mode, "Mode") \
    X(moreInfo, "More Info") \
    X(mountingLogicalVolume, "Mounting logical volume") \
    X(name, "Name") \
    X(next, "Next") \
    X(newString, "New") \
    X(noDocument, "No Document") \
    X(noError, "No Error") \
    X(noSavedSearches, "No Saved Searches") \
    X(noSelection, "No Selection") \
    X(noUpdatesAvailable, "No updates available.") \
    X(noValue, "No Value") \
    X(notApplicable, "Not Applicable") \
    X(notEditable, "Not Editable") \
    X(notes, "Notes") \
    X(notifications, "Notifications") \
    X(numbers, "Numbers") \
    X(off, "Off") \
    X(on, "On") \
    X(onlyPrintSelection, "Only print selection") \
    X(open, "Open") \
    X(openDocuments, "Open Documents") \
    X(openDocumentWithTextEncoding, "Open document with text encoding") \
    X(paint, "Paint") \
    X(part, "Part") \
    X(path, "Path") \
    X(paths, "Paths") \
    X(pathBar, "Path Bar") \
    X(position, "Position") \
    X(prefix, "Prefix") \
    X(preview, "Preview") \
    X(previous, "Previous") \
    X(printHeader, "Print header") \
    X(printLineNumbers, "Print line numbers") \
    X(printSyntaxColors, "Print syntax colors") \
    X(progress, "Progress") \
    X(quickLook, "Quick Look") \
    X(readyToInstall, "Ready to Install") \
    X(recentSearches, "Recent Searches") \
    X(refresh, "Refresh") \
    X(regularExpressions, "Regular Expressions") \
    X(relaunch, "Relaunch") \
    X(remindMe, "Remind Me") \
    X(remove, "Remove") \
    X(renameTheItemAndTryAgain, "Rename the item and try again.") \
    X(repeatInterval, "Repeat Interval") \
    X(replace, "Replace") \
    X(result, "Result") \
    X(resume, "Resume") \
    X(revealInFinder, "Reveal in Finder") \
    X(revisions, "Revisions") \
    X(rightSizeAllColumnsIndividually, "Right Size All Columns Individually") \
    X(rightSizeThisColumn, "Right Size This Column") \
    X(run, "Run") \
    X(running, "Running") \
    X(runText, "Run Text") \
    X(save, "Save") \
    X(scheduled, "Scheduled") \
    X(scope, "Scope") \
    X(script, "Script") \
    X(selection, "Selection") \
    X(selectRow, "Select Row") \
    X(separator, "Separator") \
    X(settings, "Settings") \
    X(share, "Share") \
    X(show, "Show") \
    X(showInStatusBar, "Show In Status Bar:") \
    X(showPageGuideAtColumn, "Show page guide, at column") \
    X(sidebar, "Sidebar") \
    X(skip, "Skip") \
    X(snippets, "Snippets") \
    X(space, "Space") \
    X(status, "Status") \
    X(statusBar, "Status Bar") \
    X(stop, "Stop") \
    X(suggestAutomaticallyAfterDelay, "Suggest automatically, after delay") \
    X(summary, "Summary") \
    X(suppressCommandResult, "Suppress command result") \
    X(swipe, "Swipe") \
    X(system, "System") \
    X(tags, "Tags") \
    X(tabCharacter, "Tab Character") \
    X(tabWidth, "Tab Width") \
    X(test, "Test") \
    X(text, "Text") \
    X(textScanner, "Text Scanner") \
    X(thankYou, "Thank You!") \
    X(themes, "Themes") \
    X(time, "Time") \
    X(timePeriod, "Time Period") \
    X(timeline, "Timeline") \
    X(title, "Title") \
    X(to, "To") \
    X(toggleSidebar, "Toggle Sidebar") \
    X(touch, "Touch") \
    X(tree, "Tree") \
    X(uninstall, "Uninstall") \
    X(unknown, "Unknown") \
    X(unsavedChanges, "Unsaved Changes") \
    X(uniqueName, "Unique Name") \
    X(unreadable, "Unreadable") \
    X(update, "Update") \
    X(updateCancelled, "Update Cancelled") \
    X(updatesAvailable, "Updates Available") \
    X(useCommandAndNumberToSwitchTabs, "Use ⌘‐1 through ⌘‐9 to switch tabs") \
    X(useSpacesInsteadOfTabs, "Use spaces instead of tabs") \
    X(useTheChooseButton, "Use the Choose… button to select an app, a script or write a simple command. After that you can test what you want to run.") \
    X(value, "Value") \
    X(weekdays, "Weekdays") \
    X(weekends, "Weekends") \
    X(what, "What") \
    X(when, "When") \
    X(words, "Words") \
    X(youCantUndoThisAction, "You can’t undo this action.") \
    X(you, "You") \
    X(yourChangesWillBeLostIfYouDontSaveThem, "Your changes will be lost if you don't save them.")

#define QUOD_LOCALIZE_ELLIPSIS_ENTRIES(X) \
    X(buildAnApp, "Build an App…") \
    X(choose, "Choose…") \
    X(chooseFile, "Choose File…") \
    X(chooseFolder, "Choose Folder…") \
    X(createNew, "Create New…") \
    X(edit, "Edit…") \
    X(exportString, "Export…") \
    X(gotoLine, "Go To Line…") \
    X(loading, "Loading…") \
    X(save, "Save…") \
    X(showFonts, "Show Fonts…")

#define QUOD_LOCALIZE_LOWERCASE_ENTRIES(X) \
    X(whereString, "where") \
    X(characters, "characters") \
    X(created, "created") \
    X(days, "days") \
    X(encoding, "encoding") \
    X(fileSize, "file size") \
    X(function, "function") \
    X(hours, "hours") \
    X(lines, "lines") \
    X(minute, "minute") \
    X(minutes, "minutes") \
    X(modified, "modified") \
    X(name, "name") \
    X(position, "position") \
    X(seconds, "seconds") \
    X(selection, "selection") \
    X(syntax, "syntax") \
    X(words, "words")

// clang-format on
