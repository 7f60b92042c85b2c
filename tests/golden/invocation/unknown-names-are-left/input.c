a include b _c9
