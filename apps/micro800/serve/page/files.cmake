# The files of the live page, which the program brings along. Each is served under its name.
set(page_files
  index.html
  app.css
  app.js
  chart_data.js
  entries.js
  export.js
  format.js
  history.js
  legend.js
  pointer.js
  series_style.js
  sparkline.js
  status.js
  stream.js
  table.js
  tag_row.js
  tags.js
  trend.js
  write.js)
list(TRANSFORM page_files PREPEND "${CMAKE_CURRENT_LIST_DIR}/")
