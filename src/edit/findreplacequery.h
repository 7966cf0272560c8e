#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>

// One find or replace request as the find bar builds it at each edit.
struct FindReplaceQuery {
    uint32_t mode = 0;
    QString find_str;
    QString replace_str;
    QString filter_files;
    bool case_sensitive = false;
    bool whole_word = false;
    bool whole_cell = false;
    bool regex = false;
    bool in_selected_cells = false;
    bool highlight_matches = false;
    bool preview_replace = false;
    QList<QStringList> file_lists;

    // The replacement preview and the file lists do not make a new query.
    bool operator==(const FindReplaceQuery& o) const {
        return mode == o.mode && find_str == o.find_str && replace_str == o.replace_str &&
               filter_files == o.filter_files && case_sensitive == o.case_sensitive &&
               whole_word == o.whole_word && whole_cell == o.whole_cell && regex == o.regex &&
               in_selected_cells == o.in_selected_cells && highlight_matches == o.highlight_matches;
    }
};
