// Placeholder translation unit; the library grows feature and style classes.
