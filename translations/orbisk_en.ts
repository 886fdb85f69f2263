<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>Orbisk</name>
    <message>
        <source>%lld items</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%lld of %lld selected, %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>(filtered from %lld)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ available of %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>You don’t have permission to open “%@”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” couldn’t be opened.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is no longer available.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is no longer connected.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Size</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Date Modified</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Kind</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New Tab</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close Tab</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Edit File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rename</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New Folder with Selection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New Text File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Duplicate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move to Trash</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Extract ZIP</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show in File Manager</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close Window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Undo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Redo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Paste Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Copied Files Here</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy Names as Text</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy Paths as Text</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Deselect All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Invert Selection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select by Pattern…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Deselect by Pattern…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Filter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find Files…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show Hidden Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sort by Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sort by Size</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sort by Date Modified</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sort by Kind</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show Sidebar</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Full Screen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Go</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Back</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Forward</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enclosing Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Home</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Desktop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Documents</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Downloads</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Go to Folder…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add to Favorites</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Favorites</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Favorite %lld</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Commands</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch Pane</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Swap Panes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Same Folder in Other Pane</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next Tab</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Previous Tab</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Keyboard to Sidebar</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ask…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Calculate Folder Sizes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Batch Rename…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sync Folders…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folder Breakdown</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Minimize</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Main Window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keyboard Shortcuts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View||function key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Edit||function key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Trash</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hide Function Key Bar</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show Function Key Bar</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Go to Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folder (absolute, ~ or relative path):</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Go</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no folder at “%@”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add the current folder to Favorites</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Loading…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folder Lists</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show hidden files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show folders before files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reload folders when they change on disk</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show the function key bar</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search shortcuts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No shortcuts match “%@”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Places</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Volumes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Up</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Down</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove from Favorites</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folder (link)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ (link)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Package</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Link</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Document</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select by Pattern</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Use * and ?, separate several patterns with ; (for example *.jpg;*.png).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Deselect by Pattern</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Deselect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t rename “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t copy “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t move “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t read “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t save “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t create “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t create the file “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t create the folder “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t create the folder for “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t create the archive “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t create the link “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t copy the link “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t copy the attributes of “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t move the extracted item “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t write into “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The operation on “%@” couldn’t be completed: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” can’t be copied or moved into itself or one of its own subfolders (%@).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is already in the destination folder.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The destination “%@” is not an existing folder.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” no longer exists. It may have been moved or deleted by another application.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An item named “%@” already exists.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” can’t be used as a name: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is a special file (device, socket or pipe) and was not copied.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not enough free space on the destination volume: %@ needed, %@ available.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” was copied, but the original could not be removed: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is not a folder.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The incomplete copy “%@” could not be removed: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” was not replaced: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” was not merged: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t rename (the item is now named %@) “%@”: %@.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” changed after the folders were compared, so it was left alone. Compare again to include it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” changed after the operation, so it was left as it is.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is no longer where the operation left it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Another item named “%@” is now in its old place, so it was left where it is.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is no longer in the Trash (it may have been emptied).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>a name can’t be empty.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“.” and “..” are reserved.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>a name can’t contain “/”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>a name can’t contain a NUL character.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the name is longer than 255 bytes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>more than one item would be named “%@”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ stopped before finishing.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ finished with %lld problems.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Completed: %lld. Skipped: %lld. Failed: %lld.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The operation was cancelled.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>…and %lld more.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Orbisk may not have permission to use this location. On Linux, each item has an owner and permissions that say who may read it, change it and, for a folder, open it; only the owner or an administrator can change them. Inside a sandbox such as Flatpak, Orbisk also needs to be granted access to the folder. You can review the owner and permissions in the item’s Properties.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>OK</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show Properties</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>enter a destination.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ask</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ask: type what to do in plain language, check the plan, then Run (copy, move, select, new folder)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Function Keys</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keyboard shortcuts (this page)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Edit file (text) or open it in its application</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy to the other pane</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move or rename to the other pane</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rename in place</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move to Trash (with confirmation)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Compress the selection to a ZIP in the other pane</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Extract a ZIP into the other pane</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Undo / redo the last file operation</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Panes and Tabs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch the active pane</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Swap panes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Same folder in the other pane</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New tab / close tab</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next / previous tab</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show / hide the sidebar</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move the keyboard to the sidebar (Enter opens, Esc returns)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Navigation</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Double-click</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open folder or file (default application)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enclosing folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Back / forward</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Previous / next item (Shift extends the selection)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>First / last item (Shift extends the selection)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Page up / down (Shift extends the selection)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Go to folder (absolute, ~ or relative path)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Type a name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Jump to the first matching item</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Places and Favorites</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Go to favorite 1–9</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Selection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select all</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Deselect all</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Invert selection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select by pattern</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Deselect by pattern</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quick preview</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open with the default application</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reveal in the system file manager</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New folder with the selected items in it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New empty text file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy / paste files (when the list has focus)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move the copied files here</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy item names as text</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy full paths as text</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Calculate folder sizes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Batch rename</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sync the two panes’ folders (compare, review, then sync)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show in the other pane what the folder under the cursor is made of (again to close); it follows the cursor unless Commands › Breakdown Follows Cursor is off</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Break down the selected subfolder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Back to the file list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search and View</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Filter the active pane</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clear the filter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find files in subfolders</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show / hide hidden files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sort by name / size / date modified / kind</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Full screen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Viewer and Editor</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save / save as</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find / find next</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Undo / redo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>App and Windows</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keyboard shortcuts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Main window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%lld byte</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%lld bytes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New Text File.txt</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create a folder in:
%@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create an empty file in:
%@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New Folder “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New File “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Creating a folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Creating a file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The folder couldn’t be created.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file couldn’t be created.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New Folder With Items</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create a folder in:
%@
and move “%@” into it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create a folder in:
%@
and move %lld items into it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New Folder with Selection “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New name for “%@”:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rename “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Renaming “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replace it (it goes to the Trash), or keep both and give the renamed item a free name?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replace</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep Both</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Invalid destination.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Duplicate “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Duplicate %lld Items</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>You can restore items from the Trash in your file manager.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move “%@” to the Trash?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move %lld items to the Trash?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>…and %lld more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It can no longer be read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folder, modified %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@, modified %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name Conflict</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Source and destination are the same item:
%@

Keep Both makes a copy with a new name. Nothing is overwritten.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An item named “%@” already exists in “%@”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Existing:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Incoming:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Apply to all remaining conflicts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Skip</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Merge</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replace if Older</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replace if Different</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rename Existing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancelling…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preparing…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%lld of %lld items — %@ of %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%lld of %lld items</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%lld items done</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Location: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The item can no longer be read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Symbolic link</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Special file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Kind: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Size: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Owner: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Group: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Permissions: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” Properties</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy “%@” to:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move “%@” to:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy %lld items to:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move %lld items to:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A folder, a new name for one item, or a mask such as *.bak</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ask what to do</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>If an item already exists:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Undo %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Redo %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Redoing “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Undoing “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Moving “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Moving %lld items</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copying “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copying %lld items</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>From: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move %lld Items</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy %lld Items</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Moving to the Trash</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Moving %lld items to the Trash</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move “%@” to the Trash</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move %lld Items to the Trash</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An unexpected error stopped the operation: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An unexpected error stopped the operation.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy to Other Pane…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move to Other Pane…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rename…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New Folder…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New Folder with Selection…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New Text File…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move to Trash…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it is the item being copied or contains it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>only two folders can be merged.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The destination volume is full (%@). Remaining items were not processed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%lld items were added, changed or could not be removed during the move and were left in place (%@).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it couldn’t be renamed (%@). It was left unchanged.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it couldn’t be moved to the Trash (%@). It was left unchanged.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the old item is in the Trash, but the new one couldn’t take its name (%@). It is in the same folder as “%@”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the new item couldn’t take its name (%@). The existing item was left unchanged.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the new item couldn’t take its name (%@). The existing item is now named “%@”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the item was left under this temporary name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Archive</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Compress “%@” into a ZIP archive in:
%@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Compress %lld items into a ZIP archive in:
%@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Compress</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The archive couldn’t be created.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Compress “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Compress %lld items</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Compressing into “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To: %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Extract “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Extracting “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Extract</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Encoding used when saving</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Line endings used when saving</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This file mixes line endings. Saving writes %@ everywhere.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replaced %lld</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save As…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Revert to Saved</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Undo Typing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Redo Typing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find and Replace…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find Next</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save As</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” couldn’t be saved.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reload</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” couldn’t be opened for editing.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search wrapped to the beginning</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Do you want to save the changes to “%@”?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your changes will be lost if you don’t save them.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replace with</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replace All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Match case</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quick Preview</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 item</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open in Default Application</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wrap Lines</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show as Hex</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Follow Growing File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Binary</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not UTF-8: invalid bytes shown as �</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Searching…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Share</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Items</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Breakdown of %@</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Another volume is mounted here; its contents aren’t counted.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This folder couldn’t be read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Measuring… %@ so far (%lld of %lld folders)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%@ in %lld files and %lld folders</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%lld items couldn’t be read and aren’t counted.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find in “%@”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name contains, or pattern like *.pdf;*.docx</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Text inside the file (optional)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Include hidden files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Regular expression</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Look in:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Containing:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Line</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Searching… %lld found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%lld found in %@ items</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>(result limit reached)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>(stopped)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%lld folders couldn’t be read</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The regular expression isn’t valid (%@).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Compress to ZIP…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Breakdown Follows Cursor</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is where another volume is mounted; its contents were not copied.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is where another volume is mounted, so it can’t be moved. Nothing was changed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is where another volume is mounted, so it can’t be moved to the Trash. Nothing was changed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” holds another volume, mounted at %@, so it can’t be moved to the Trash. Nothing was changed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” holds another volume, mounted at %@, so it can’t be moved. Nothing was changed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” still holds items that were left as they are, so it was left where it is.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“.” and “..” stand for folders by their place; name the folder itself.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not everything inside it could be copied. The existing item was left unchanged.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it is no longer where it was (another program moved or deleted it during the move).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%lld items were moved or deleted by another program during the move (%@).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LF (Unix/macOS)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>CRLF (Windows)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>CR (classic Mac)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>UTF-8</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>UTF-8 with BOM</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>UTF-16 LE (BOM)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>UTF-16 BE (BOM)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file is too large to edit (%@; the limit is %@).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file appears to be binary, not plain text.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file is not valid UTF-8 or BOM-marked UTF-16. To avoid corrupting it, it is not converted.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file was changed by another application after it was opened.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file was moved or deleted by another application after it was opened.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The text can’t be represented in the file’s encoding.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is not a regular file (it may be a folder, a pipe or a device).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is encrypted; encrypted archives are not supported.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” uses compression method %lld, which is not supported.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is damaged in the archive.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” failed its checksum; the archive may be damaged.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” has an unsafe path (absolute or containing “..”) and was not extracted.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The symbolic link “%@” points outside the extracted folder and was not created.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” is 4 GB or larger, which needs ZIP64 (not supported).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file is not a ZIP archive or is damaged.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>ZIP64 archives (larger than 4 GB or with more than 65,535 entries) are not supported.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%@” has a modification date after 2107, which a ZIP archive can’t hold.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
