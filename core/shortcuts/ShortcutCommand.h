// Stable names of the commands that have keyboard shortcuts, for binding the app's actions.
#pragma once

namespace orbisk {

/// One command reachable from the keyboard. The app looks up its keys by this name
/// (ShortcutCatalog::keys), so that a menu and the shortcut list can never disagree. The values
/// are stable identifiers, not storage: add new ones before closeWindow, which stays last.
enum class ShortcutCommand {
    ask,
    // function keys and file operations
    showShortcuts,
    viewFile,
    editFile,
    copyToOtherPane,
    moveToOtherPane,
    renameInPlace,
    newFolder,
    moveToTrash,
    compressToOtherPane,
    extractToOtherPane,
    undo,
    redo,
    quit,
    // panes and tabs
    switchPane,
    swapPanes,
    sameFolderInOtherPane,
    newTab,
    closeTab,
    nextTab,
    previousTab,
    refresh,
    toggleSidebar,
    focusSidebar,
    // navigation
    openItem,
    enclosingFolder,
    back,
    forward,
    previousItem,
    nextItem,
    firstItem,
    lastItem,
    pageUp,
    pageDown,
    goToFolder,
    jumpToTypedName,
    // places and favorites
    goHome,
    goDesktop,
    goDocuments,
    goDownloads,
    addFavorite,
    goToFavorite1,
    goToFavorite2,
    goToFavorite3,
    goToFavorite4,
    goToFavorite5,
    goToFavorite6,
    goToFavorite7,
    goToFavorite8,
    goToFavorite9,
    // selection
    selectAll,
    deselectAll,
    invertSelection,
    selectByPattern,
    deselectByPattern,
    // files
    quickPreview,
    openWithDefaultApplication,
    revealInFileManager,
    newFolderWithSelection,
    newTextFile,
    duplicate,
    copyFiles,
    pasteFiles,
    moveCopiedFilesHere,
    copyNames,
    copyPaths,
    calculateFolderSizes,
    batchRename,
    syncFolders,
    // folder breakdown
    toggleBreakdown,
    breakdownOpen,
    breakdownEnclosingFolder,
    closeBreakdown,
    // search and view
    filter,
    clearFilter,
    findFiles,
    toggleHiddenFiles,
    sortByName,
    sortBySize,
    sortByDate,
    sortByKind,
    toggleFullScreen,
    // viewer and editor
    saveText,
    saveTextAs,
    findText,
    findNextText,
    undoText,
    redoText,
    // application and windows
    showSettings,
    showMainWindow,
    closeWindow,
};

/// How many commands there are; ShortcutCommand values run from 0 to this, exclusive.
inline constexpr int shortcutCommandCount = static_cast<int>(ShortcutCommand::closeWindow) + 1;

} // namespace orbisk
